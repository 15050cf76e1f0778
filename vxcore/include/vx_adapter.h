/// \file
/// VX_AdapterStore: the storage the stack and the queue share.
#ifndef VX_ADAPTER_H
#define VX_ADAPTER_H

#include "vx_vcarray.h"

/// VX_AdapterStore<T>: owns one storage made at full size, either a fixed VX_Array<T> (the
/// capacity is final) or a growable VX_VCArray<T> (grown by the owner when full), and the
/// element count `num` that the owner moves indices with. It is enabled once the storage
/// exists; a storage that cannot be made leaves it disabled. Not copyable.
template <class T>
class VX_API VX_AdapterStore : public VX_VorlaxeClass {
 public:
  VX_AdapterStore(const VX_AdapterStore&) = delete;
  VX_AdapterStore& operator=(const VX_AdapterStore&) = delete;

  /// 0 when the storage could not be made.
  unsigned char objIsEnabled() const { return enabled; }
  /// The capacity: the storage's element count (0 when disabled).
  unsigned int getSize() const {
    VX_setUserError(0);
    if (!hasStorage()) return 0;
    return growable ? vcArray->numElems() : array->numElems();
  }
  /// 1 when no element is held (also when disabled).
  unsigned char isEmpty() const {
    VX_setUserError(0);
    return !hasStorage() || num == 0;
  }
  /// 1 when every slot holds an element; a growable store is full until its owner grows it.
  unsigned char isFull() const {
    VX_setUserError(0);
    return hasStorage() && num == getSize();
  }

 protected:
  /// Nothing yet: disabled until the owner makes its storage.
  VX_AdapterStore() : enabled(0), array(nullptr), vcArray(nullptr), growable(0), num(0) {}
  /// Frees the storage.
  ~VX_AdapterStore() override { releaseStorage(); }

  /// Enabled and holding the storage of its kind.
  bool hasStorage() const { return enabled && (growable ? vcArray != nullptr : array != nullptr); }

  /// Makes the fixed storage; an allocation failure is reported at `line` of `file`.
  void makeFixed(unsigned int size, unsigned char rawMemory, const char* file, unsigned line) {
    array = VX_newObject<VX_Array<T>>(size, rawMemory);
    enabled = adopt(array, file, line);
  }
  /// Makes the growable storage; a storage refusing its arguments has reported already.
  void makeGrowable(unsigned int initialSize, unsigned int blockSize, unsigned char rawMemory,
                    const char* file, unsigned line) {
    growable = 1;
    vcArray = VX_newObject<VX_VCArray<T>>(initialSize, blockSize, rawMemory);
    enabled = adopt(vcArray, file, line);
  }
  /// Frees the storage with its elements; the store ends empty and disabled.
  void releaseStorage() {
    VX_deleteObject(array);
    VX_deleteObject(vcArray);
    array = nullptr;
    vcArray = nullptr;
    num = 0;
    enabled = 0;
  }
  /// Slot `i` of the storage, with the storage's reports and sink outside it.
  ///@{
  T& slot(unsigned int i) { return growable ? (*vcArray)[i] : (*array)[i]; }
  const T& slot(unsigned int i) const {
    const VX_VCArray<T>* v = vcArray;
    const VX_Array<T>* a = array;
    return growable ? (*v)[i] : (*a)[i];
  }
  ///@}
  /// Opens `count` slots behind slot `after` of the growable storage.
  VX_RET_STATUS grow(unsigned int after, unsigned int count) {
    return vcArray->insElems(VX_INS_AFTER, after, count);
  }

  unsigned char enabled;  ///< set once the storage exists
  VX_Array<T>* array;  ///< the fixed storage, or null
  VX_VCArray<T>* vcArray;  ///< the growable storage, or null
  unsigned char growable;  ///< 1 for the VX_VCArray storage
  unsigned int num;  ///< elements held

 private:
  /// Keeps `storage` when it came up enabled; otherwise releases it (1 / 0 for `enabled`).
  template <class S>
  unsigned char adopt(S*& storage, const char* file, unsigned line) {
    if (!storage) {
      VX_reportStatus(VX_RET_ERR_MEM, file, line);
      return 0;
    }
    if (storage->objIsEnabled()) return 1;
    VX_deleteObject(storage);
    storage = nullptr;
    return 0;
  }
};

#endif
