/// \file
/// Undoable commands, composite commands and the undo/redo stack.
#ifndef VX_COMMAND_H
#define VX_COMMAND_H

#include "vx_stack.h"
#include "vx_vararr.h"

class VX_Command;

// The library's instantiations for the command stack's storage.
extern template struct VX_API VX_VCARR_LLIST_REC<VX_Command*>;
VX_CONTAINER_INTERFACE_INSTANCES(extern, VX_VCARR_LLIST_REC<VX_Command*>)
extern template class VX_API VX_LNode<VX_VCARR_LLIST_REC<VX_Command*>>;
extern template class VX_API VX_LList<VX_VCARR_LLIST_REC<VX_Command*>>;
VX_CONTAINER_INTERFACE_INSTANCES(extern, VX_Command*)
extern template class VX_API VX_Array<VX_Command*>;
extern template class VX_API VX_VCArray<VX_Command*>;
extern template class VX_API VX_AdapterStore<VX_Command*>;
extern template class VX_API VX_Stack<VX_Command*>;

/// VX_Command: the abstract base of an undoable operation, a command number chosen by the
/// application plus a list of variant arguments that it owns (copies). A derived class
/// implements execute and undo; each returns a status, above 2 on failure. A command whose
/// argument list could not be made is disabled, and its operations report VX_RET_ERR_POBJ.
/// Commands are not copy-constructed; assignment copies the number and the arguments.
class VX_API VX_Command : public VX_VorlaxeClass {
 public:
  /// Command number 0 and no arguments.
  VX_Command();
  /// Frees the argument copies.
  ~VX_Command() override;
  /// Carries out / reverts the operation; written by the derived class. A result above 2 is a
  /// failure, which the command stack and the composite pass on.
  ///@{
  virtual VX_RET_STATUS execute() = 0;
  virtual VX_RET_STATUS undo() = 0;
  ///@}

  /// Sets the command number; the arguments stay.
  VX_RET_STATUS setCmd(unsigned long command);
  /// Empties the arguments, sets the number, then copies `count` further arguments, each a
  /// VX_Var*, into arguments 0 .. count-1. A null one stops the copy (VX_RET_ERR_ARG) with the
  /// arguments before it in place.
  VX_RET_STATUS setCmd(unsigned long command, unsigned int count, ...);
  /// Copies the command number into `command`.
  VX_RET_STATUS getCmd(unsigned long& command);
  /// Appends a copy of `arg`. When the copy fails (its status is returned) nothing is added.
  VX_RET_STATUS addArg(VX_Var& arg);
  /// Copies argument `i` into `out` / replaces argument `i` by a copy of `arg`; an index at or
  /// beyond numArgs() is VX_RET_ERR_ARG, and a copy that fails returns the variant's status.
  ///@{
  VX_RET_STATUS getArg(unsigned int i, VX_Var& out);
  VX_RET_STATUS setArg(unsigned int i, VX_Var& arg);
  ///@}
  /// The number of arguments (0 when disabled).
  unsigned int numArgs();

  /// Copies the number and the arguments; a disabled side is reported (VX_RET_ERR_POBJ) and
  /// nothing changes.
  VX_Command& operator=(const VX_Command& other);
  /// Same number and equal arguments; a disabled command equals only itself.
  unsigned char operator==(const VX_Command& other) const;
  /// 0 when the argument list could not be made.
  unsigned char objIsEnabled() const { return enabled; }

 private:
  VX_Command(const VX_Command&);
  void initDataMembers();
  void cleanupDataMembers();
  VX_RET_STATUS usable(unsigned line) const;

  unsigned char enabled;
  unsigned long command;
  VX_VarArr args;
};

/// VX_CommandMulti: a command whose arguments are pointers to other commands (variants of the
/// pointer kind, added with addArg), run as one. It does not own them. execute and undo both
/// walk the sub-commands in the order they were added (undo does not reverse it), skip null
/// pointers, and stop at the first failure, which is returned; what already ran stays done. An
/// argument that is not a pointer is such a failure (VX_RET_ERR_ARG).
class VX_API VX_CommandMulti : public VX_Command {
 public:
  /// An empty composite (no sub-commands), command number 0.
  VX_CommandMulti();
  /// Leaves the sub-commands alone: they are not owned.
  ~VX_CommandMulti() override;
  /// Runs execute / undo of every sub-command in the order they were added (undo too), as
  /// described for the class.
  ///@{
  VX_RET_STATUS execute() override;
  VX_RET_STATUS undo() override;
  ///@}

  /// As VX_Command assignment: the pointers are copied, not the commands they point to.
  VX_CommandMulti& operator=(const VX_CommandMulti& other);
  /// As VX_Command equality: for sub-commands, the same pointers in the same order.
  unsigned char operator==(const VX_CommandMulti& other) const;
  /// 0 when the argument list could not be made.
  unsigned char objIsEnabled() const { return enabled && VX_Command::objIsEnabled(); }

 private:
  VX_CommandMulti(const VX_CommandMulti&);
  VX_RET_STATUS runAll(bool forward);

  unsigned char enabled;
};

/// VX_CmdStack: the history of executed commands. Commands below `position` are done; those
/// at and above it are undone and can be redone. The stack owns every command it records
/// (they must come from `new`) and deletes them when it discards them; a command that addCmd
/// refuses stays the caller's. undo moves the position down even when the command's undo
/// fails, redo moves it up only when execute succeeds. The history is a chunked stack (blocks of
/// 64): recording, and undo/redo near the newest commands, take constant time; a step d commands
/// below the top walks about d/64 blocks. A stack whose storage cannot be made is
/// disabled: its operations report VX_RET_ERR_POBJ and its predicates answer 0.
///
/// Two optional settings, both off for a new stack:
/// - an undo limit: at most that many done commands are kept; recording or lowering the limit
///   deletes the oldest ones beyond it. 0 means no limit.
/// - a clean mark: setClean marks the present position as the saved state; isClean answers
///   whether the history stands there again (for a "document modified" indicator). A new or
///   emptied stack is clean. Discarding the commands that lead back to the mark (a new command
///   over undone ones, or the undo limit) leaves the stack unable to become clean again until
///   setClean is called.
class VX_API VX_CmdStack : public VX_VorlaxeClass {
 public:
  /// An empty, clean stack without an undo limit.
  VX_CmdStack();
  /// Deletes every recorded command, newest first.
  ~VX_CmdStack() override;

  /// Records a command the caller has just executed (addCmd does not run it); the undone
  /// commands above the position are deleted first, newest first. A null command is
  /// VX_RET_ERR_ARG.
  VX_RET_STATUS addCmd(VX_Command* cmd);
  /// Undoes the command below the position / redoes the one at it (its execute).
  /// VX_RET_FALSE when there is nothing to undo / redo; a command's failure is passed on.
  ///@{
  VX_RET_STATUS undo();
  VX_RET_STATUS redo();
  ///@}
  /// 1 when undo / redo has a command to run (0 when disabled).
  ///@{
  unsigned char undoIsPossible();
  unsigned char redoIsPossible();
  ///@}
  /// Deletes every command, newest first; the position becomes 0.
  VX_RET_STATUS clearUndoStack();

  /// The number of recorded commands / of done ones (the position); 0 when disabled.
  ///@{
  unsigned int numCmds();
  unsigned int getPosition();
  ///@}
  /// Sets the undo limit (0: none) and deletes the oldest done commands beyond it.
  VX_RET_STATUS setUndoLimit(unsigned int limit);
  /// The undo limit; 0 for none (and when disabled).
  unsigned int getUndoLimit();
  /// Marks the present position as the saved state.
  VX_RET_STATUS setClean();
  /// 1 while the history stands at the saved state (0 when disabled).
  unsigned char isClean();

  /// A stack owns its commands and cannot copy them: assignment from another stack is refused
  /// (VX_RET_ERR_NSUP reported) and leaves this one as it is.
  VX_CmdStack& operator=(const VX_CmdStack& other);
  /// Same object, or the same position and pairwise equal commands (VX_Command ==). The undo
  /// limit and the clean mark are settings, not history, and are not compared.
  unsigned char operator==(const VX_CmdStack& other) const;
  /// 0 when the history's storage could not be made.
  unsigned char objIsEnabled() const { return enabled; }

 private:
  VX_CmdStack(const VX_CmdStack&);
  void initDataMembers();
  void cleanupDataMembers();
  VX_RET_STATUS usable(unsigned line) const;
  /// Pops and deletes commands until `keep` remain.
  void discardAbove(unsigned int keep);
  /// Deletes the oldest done commands until at most `limit` are left.
  VX_RET_STATUS enforceLimit();

  unsigned char enabled;
  unsigned int position;
  VX_Stack<VX_Command*>* commands;
  unsigned int undoLimit;  ///< 0: none
  unsigned int cleanPosition;  ///< meaningful while cleanReachable is set
  unsigned char cleanReachable;
};

#endif
