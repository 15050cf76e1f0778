/// \file
/// The abstract operator object.
#ifndef VX_OPERATOR_H
#define VX_OPERATOR_H

#include "vx_globals.h"
#include "vx_vorlaxe.h"

/// VX_Operator: the base of operator objects, each of which supplies its one operation. It
/// owns nothing; its only state is the initialised flag, set by construction and cleared by
/// destruction (destroying an object twice reports VX_RET_ERR_POBJ). Operators are not copied:
/// copy construction reports VX_RET_ERR_NSUP (VX_RET_ERR_POBJ from an uninitialised source, which
/// leaves the new object uninitialised too); assignment copies the flag only.
class VX_API VX_Operator : public VX_VorlaxeClass {
 public:
  /// An initialised operator.
  VX_Operator();
  /// Clears the initialised flag; VX_RET_ERR_POBJ is reported when it was clear already.
  ~VX_Operator() override;
  /// Copies the initialised flag only.
  VX_Operator& operator=(const VX_Operator& other);
  /// Nonzero from construction until destruction (or an assignment from an uninitialised one).
  unsigned char objIsEnabled() const { return initialised; }

  /// Performs the operation; the status and its meaning are the derived class's.
  virtual VX_RET_STATUS operate() = 0;

 private:
  VX_Operator(const VX_Operator& other);
  void cleanupDataMembers();

  unsigned char initialised;
};

#endif
