// Commands, composite commands and the undo/redo stack.
#define VX_MODULE_LABEL ".\\src\\vx_command"

#include "vx_command.h"

#include <cstdarg>

#include "vx_report.h"

template struct VX_VCARR_LLIST_REC<VX_Command*>;
VX_CONTAINER_INTERFACE_INSTANCES(, VX_VCARR_LLIST_REC<VX_Command*>)
template class VX_LNode<VX_VCARR_LLIST_REC<VX_Command*>>;
template class VX_LList<VX_VCARR_LLIST_REC<VX_Command*>>;
VX_CONTAINER_INTERFACE_INSTANCES(, VX_Command*)
template class VX_Array<VX_Command*>;
template class VX_VCArray<VX_Command*>;
template class VX_AdapterStore<VX_Command*>;
template class VX_Stack<VX_Command*>;

namespace {

// A variant copy that says whether it took: a refused or failed assignment hands back the
// sink (and was reported by the variant), so its status is the one the cell recorded.
VX_RET_STATUS copyVar(VX_Var& to, const VX_Var& from) {
  if (&(to = from) == &to) return VX_RET_TRUE;
  VX_RET_STATUS st = VX_getStatusCode();
  return st > 2 ? st : VX_RET_ERR_GEN;
}

// The command history: a growable stack of 64-slot blocks that can also let go of its oldest
// entries, which the undo limit needs. The stack owns nothing here; VX_CmdStack deletes the
// commands.
class CmdHistory : public VX_Stack<VX_Command*> {
 public:
  CmdHistory() : VX_Stack<VX_Command*>(64, 64, 64, 1) {}

  // Removes the n entries at the bottom; the storage shrinks with them and grows again by
  // whole blocks when full, so this costs at most one block's shift.
  VX_RET_STATUS dropOldest(unsigned int n) {
    VX_RET_STATUS st = this->vcArray->delElems(0, n);
    if (st > 2) return st;
    this->num -= n;
    return VX_RET_TRUE;
  }
};

}  // namespace

// ---------------------------------------------------------------------------------------------
// VX_Command

VX_Command::VX_Command() : VX_VorlaxeClass() {
  VX_setUserError(0);
  initDataMembers();
}

VX_Command::~VX_Command() { cleanupDataMembers(); }

void VX_Command::initDataMembers() {
  command = 0;
  enabled = args.objIsEnabled();
}

void VX_Command::cleanupDataMembers() { enabled = 0; }

VX_RET_STATUS VX_Command::usable(unsigned line) const {
  return enabled ? VX_RET_TRUE : VX_reportFail(VX_RET_ERR_POBJ, VX_MODULE_LABEL, line);
}

VX_RET_STATUS VX_Command::setCmd(unsigned long cmd) {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st <= 2) command = cmd;
  return st;
}

VX_RET_STATUS VX_Command::setCmd(unsigned long cmd, unsigned int count, ...) {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2 || (st = args.delAll()) > 2) return st;
  command = cmd;
  va_list list;
  va_start(list, count);
  for (unsigned int k = 0; k < count && st <= 2; ++k) {
    VX_Var* arg = va_arg(list, VX_Var*);
    st = arg ? addArg(*arg) : VX_FAIL(VX_RET_ERR_ARG);
  }
  va_end(list);
  return st > 2 ? st : VX_RET_TRUE;
}

VX_RET_STATUS VX_Command::getCmd(unsigned long& cmd) {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st <= 2) cmd = command;
  return st;
}

VX_RET_STATUS VX_Command::addArg(VX_Var& arg) {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  // A default slot first, then the copy, so that a copy that does not take is not kept.
  if ((st = args.appendElem(VX_Var())) > 2) return st;
  unsigned int last = args.numElems() - 1;
  if ((st = copyVar(args[last], arg)) > 2) args.delElems(last, 1);
  return st;
}

VX_RET_STATUS VX_Command::getArg(unsigned int i, VX_Var& out) {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  if (i >= args.numElems()) return VX_FAIL(VX_RET_ERR_ARG);
  return copyVar(out, args[i]);
}

VX_RET_STATUS VX_Command::setArg(unsigned int i, VX_Var& arg) {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  if (i >= args.numElems()) return VX_FAIL(VX_RET_ERR_ARG);
  return copyVar(args[i], arg);
}

unsigned int VX_Command::numArgs() {
  VX_setUserError(0);
  return enabled ? args.numElems() : 0;
}

VX_Command& VX_Command::operator=(const VX_Command& other) {
  VX_setUserError(0);
  if (&other == this || usable(__LINE__) > 2 || other.usable(__LINE__) > 2) return *this;
  args = other.args;
  command = other.command;
  return *this;
}

unsigned char VX_Command::operator==(const VX_Command& other) const {
  VX_setUserError(0);
  if (&other == this) return 1;
  return enabled && other.enabled && command == other.command && args == other.args;
}

// ---------------------------------------------------------------------------------------------
// VX_CommandMulti

VX_CommandMulti::VX_CommandMulti() : VX_Command(), enabled(VX_Command::objIsEnabled()) {}

VX_CommandMulti::~VX_CommandMulti() { enabled = 0; }

VX_RET_STATUS VX_CommandMulti::runAll(bool forward) {
  VX_setUserError(0);
  if (!objIsEnabled()) return VX_FAIL(VX_RET_ERR_POBJ);
  unsigned int n = numArgs();
  for (unsigned int i = 0; i < n; ++i) {
    VX_Var arg;
    VX_RET_STATUS st = getArg(i, arg);
    void* p = nullptr;
    if (st > 2 || (st = arg.get(&p)) > 2) return st;
    if (!p) continue;
    VX_Command* sub = static_cast<VX_Command*>(p);
    if ((st = forward ? sub->execute() : sub->undo()) > 2) return st;
  }
  return VX_RET_TRUE;
}

// Both directions walk the sub-commands in the order they were added.
VX_RET_STATUS VX_CommandMulti::execute() { return runAll(true); }
VX_RET_STATUS VX_CommandMulti::undo() { return runAll(false); }

VX_CommandMulti& VX_CommandMulti::operator=(const VX_CommandMulti& other) {
  VX_Command::operator=(other);
  return *this;
}

unsigned char VX_CommandMulti::operator==(const VX_CommandMulti& other) const {
  return VX_Command::operator==(other);
}

// ---------------------------------------------------------------------------------------------
// VX_CmdStack

VX_CmdStack::VX_CmdStack() : VX_VorlaxeClass() {
  VX_setUserError(0);
  initDataMembers();
}

VX_CmdStack::~VX_CmdStack() {
  if (enabled) cleanupDataMembers();
}

void VX_CmdStack::initDataMembers() {
  enabled = 0;
  position = 0;
  undoLimit = 0;
  cleanPosition = 0;
  cleanReachable = 1;
  commands = VX_newObject<CmdHistory>();
  if (!commands) {
    VX_REPORT_STATUS(VX_RET_ERR_MEM);
    return;
  }
  if (!commands->objIsEnabled()) {  // its storage has reported
    VX_deleteObject(commands);
    commands = nullptr;
    return;
  }
  enabled = 1;
}

void VX_CmdStack::cleanupDataMembers() {
  discardAbove(0);
  VX_deleteObject(commands);
  commands = nullptr;
  position = 0;
  enabled = 0;
}

VX_RET_STATUS VX_CmdStack::usable(unsigned line) const {
  return enabled ? VX_RET_TRUE : VX_reportFail(VX_RET_ERR_POBJ, VX_MODULE_LABEL, line);
}

void VX_CmdStack::discardAbove(unsigned int keep) {
  while (commands->getNum() > keep) delete commands->pop();
}

VX_RET_STATUS VX_CmdStack::enforceLimit() {
  while (undoLimit != 0 && position > undoLimit) {
    // Taken out of the history before it is deleted, so a refusal leaves nothing dangling.
    VX_Command* oldest = commands->peek(0);
    VX_RET_STATUS st = static_cast<CmdHistory*>(commands)->dropOldest(1);
    if (st > 2) return st;
    delete oldest;
    --position;
    if (cleanPosition == 0)
      cleanReachable = 0;  // the saved state lay before the command just deleted
    else
      --cleanPosition;
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_CmdStack::addCmd(VX_Command* cmd) {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  if (!cmd) return VX_FAIL(VX_RET_ERR_ARG);
  discardAbove(position);
  if (cleanPosition > position) cleanReachable = 0;
  if ((st = commands->push(cmd)) > 2) return st;
  ++position;
  return enforceLimit();
}

VX_RET_STATUS VX_CmdStack::undo() {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  if (position == 0) return VX_RET_FALSE;
  // The position moves down whatever the command answers, so that a redo runs it again.
  --position;
  st = commands->peek(position)->undo();
  return st > 2 ? st : VX_RET_TRUE;
}

VX_RET_STATUS VX_CmdStack::redo() {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  if (position >= commands->getNum()) return VX_RET_FALSE;
  if ((st = commands->peek(position)->execute()) > 2) return st;
  ++position;
  return VX_RET_TRUE;
}

unsigned char VX_CmdStack::undoIsPossible() {
  VX_setUserError(0);
  return enabled && position != 0;
}

unsigned char VX_CmdStack::redoIsPossible() {
  VX_setUserError(0);
  return enabled && position < commands->getNum();
}

VX_RET_STATUS VX_CmdStack::clearUndoStack() {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  // The document stays as it is: clean afterwards exactly when it is clean now.
  cleanReachable = isClean();
  cleanPosition = 0;
  discardAbove(0);
  position = 0;
  return VX_RET_TRUE;
}

unsigned int VX_CmdStack::numCmds() {
  VX_setUserError(0);
  return enabled ? commands->getNum() : 0;
}

unsigned int VX_CmdStack::getPosition() {
  VX_setUserError(0);
  return enabled ? position : 0;
}

VX_RET_STATUS VX_CmdStack::setUndoLimit(unsigned int limit) {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  undoLimit = limit;
  return enforceLimit();
}

unsigned int VX_CmdStack::getUndoLimit() {
  VX_setUserError(0);
  return enabled ? undoLimit : 0;
}

VX_RET_STATUS VX_CmdStack::setClean() {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  cleanPosition = position;
  cleanReachable = 1;
  return VX_RET_TRUE;
}

unsigned char VX_CmdStack::isClean() {
  VX_setUserError(0);
  return enabled && cleanReachable && cleanPosition == position;
}

VX_CmdStack& VX_CmdStack::operator=(const VX_CmdStack& other) {
  VX_setUserError(0);
  if (&other != this) VX_REPORT_STATUS(VX_RET_ERR_NSUP);
  return *this;
}

unsigned char VX_CmdStack::operator==(const VX_CmdStack& other) const {
  VX_setUserError(0);
  if (&other == this) return 1;
  if (!enabled || !other.enabled || position != other.position) return 0;
  unsigned int n = commands->getNum();
  if (n != other.commands->getNum()) return 0;
  for (unsigned int k = 0; k < n; ++k)
    if (!(*commands->peek(k) == *other.commands->peek(k))) return 0;
  return 1;
}
