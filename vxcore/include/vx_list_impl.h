// Bodies of VX_LNode and VX_LList. Included by vx_list.h; reports carry this header's label
// and the list's fixed line numbers.
#ifndef VX_LIST_IMPL_H
#define VX_LIST_IMPL_H

#include "vx_list.h"

#define VX_LIST_IMPL_FILE "vxcore/include/vx_list_impl"

// ---- VX_LNode --------------------------------------------------------------------------

template <class T>
VX_LNode<T>::VX_LNode(const T& value) : data(value) {
  VX_setUserError(0);
  initDataMembers();
  enabled = VX_copyTook(data, value, 0);
}

template <class T>
VX_LNode<T>::~VX_LNode() {
  cleanupDataMembers();
}

template <class T>
VX_LNode<T>& VX_LNode<T>::operator=(const VX_LNode& other) {
  VX_setUserError(0);
  if (&other != this) data = other.data;
  return *this;
}

template <class T>
void VX_LNode<T>::initDataMembers() {
  next = nullptr;
  prev = nullptr;
  enabled = 1;
}

template <class T>
void VX_LNode<T>::cleanupDataMembers() {
  next = nullptr;
  prev = nullptr;
  enabled = 0;
}

// ---- VX_LList: life cycle and node bookkeeping -------------------------------------------

template <class T>
VX_LList<T>::VX_LList() {
  VX_setUserError(0);
  initDataMembers();
}

template <class T>
VX_LList<T>::~VX_LList() {
  if (enabled) cleanupDataMembers();
}

template <class T>
void VX_LList<T>::initDataMembers() {
  head = nullptr;
  tail = nullptr;
  this->nElems = 0;
  enabled = 1;
}

template <class T>
VX_RET_STATUS VX_LList<T>::cleanupDataMembers() {
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_LIST_IMPL_FILE, 208);
  freeChain(head);
  head = tail = nullptr;
  this->nElems = 0;
  this->clearCur();
  enabled = 0;
  return VX_RET_TRUE;
}

template <class T>
void VX_LList<T>::freeChain(Node* first) {
  while (first) {
    Node* next = first->next;
    VX_deleteObject(first);
    first = next;
  }
}

template <class T>
typename VX_LList<T>::Node* VX_LList<T>::newNode(const T& elem, unsigned line) {
  Node* node = VX_newObject<Node>(elem);
  if (!node) {
    VX_reportStatus(VX_RET_ERR_MEM, VX_LIST_IMPL_FILE, line);
  } else if (!node->enabled) {
    VX_deleteObject(node);  // the element's failed copy has reported
    node = nullptr;
  }
  return node;
}

template <class T>
void VX_LList<T>::pointCur(Node* node, unsigned int index) {
  if (!node) {
    this->clearCur();
    return;
  }
  this->cur.set(index, &node->data);
  this->cur.node = node;
}

template <class T>
typename VX_LList<T>::Node* VX_LList<T>::nodeAt(unsigned int index) const {
  unsigned int n = this->nElems;
  if (index >= n) return nullptr;
  Node* node;
  if (index < n / 2) {
    node = head;
    for (unsigned int i = 0; i < index; ++i) node = node->next;
  } else {
    node = tail;
    for (unsigned int i = n - 1; i > index; --i) node = node->prev;
  }
  return node;
}

template <class T>
void VX_LList<T>::link(Node* node, Node* at, bool before) {
  if (before) {
    Node* after = at ? at : head;
    node->next = after;
    node->prev = after ? after->prev : nullptr;
  } else {
    Node* prior = at ? at : tail;
    node->prev = prior;
    node->next = prior ? prior->next : nullptr;
  }
  if (node->prev)
    node->prev->next = node;
  else
    head = node;
  if (node->next)
    node->next->prev = node;
  else
    tail = node;
  ++this->nElems;
}

template <class T>
void VX_LList<T>::unlink(Node* node) {
  if (node->prev)
    node->prev->next = node->next;
  else
    head = node->next;
  if (node->next)
    node->next->prev = node->prev;
  else
    tail = node->prev;
  node->next = node->prev = nullptr;
  --this->nElems;
  if (curNode() == node) this->clearCur();
}

template <class T>
void VX_LList<T>::linkAtCur(VX_INS_METHOD method, Node* node) {
  Node* at = curNode();
  if (method == VX_INS_BEFORE) {
    link(node, at, true);
    // The cursor moves onto the new node but its index counts one up: kept as callers
    // expect it.
    pointCur(node, this->cur.index + 1);
  } else {
    link(node, at, false);
  }
}

template <class T>
void VX_LList<T>::spliceAfter(Node* at, VX_LList& from) {
  if (!from.head) return;
  Node* first = from.head;
  Node* last = from.tail;
  Node* after = at ? at->next : head;
  first->prev = at;
  last->next = after;
  if (at)
    at->next = first;
  else
    head = first;
  if (after)
    after->prev = last;
  else
    tail = last;
  this->nElems += from.nElems;
  from.head = from.tail = nullptr;
  from.nElems = 0;
  from.clearCur();
}

template <class T>
VX_LList<T>& VX_LList<T>::operator=(const VX_LList& src) {
  VX_setUserError(0);
  if (&src == this) return *this;
  if (!enabled || !src.enabled) {
    VX_reportStatus(VX_RET_ERR_OBJ, VX_LIST_IMPL_FILE, __LINE__);
    return *this;
  }
  // The copy is built aside, so running out of memory leaves this list as it was.
  VX_LList copy;
  for (Node* n = src.head; n; n = n->next) {
    if (copy.appendElem(n->data) > 2) return *this;
  }
  freeChain(head);
  head = tail = nullptr;
  this->nElems = 0;
  this->clearCur();
  spliceAfter(nullptr, copy);
  return *this;
}

template <class T>
unsigned char VX_LList<T>::operator==(const VX_LList& other) const {
  VX_setUserError(0);
  if (&other == this) return 1;
  if (this->nElems != other.nElems) return 0;
  for (Node *a = head, *b = other.head; a && b; a = a->next, b = b->next)
    if (!(a->data == b->data)) return 0;
  return 1;
}

// ---- VX_LList: insertion and removal ---------------------------------------------------

template <class T>
VX_RET_STATUS VX_LList<T>::appendElem(const T& elem) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_LIST_IMPL_FILE, 508);
  Node* node = newNode(elem, 511);
  if (!node) return VX_RET_ERR_MEM;
  link(node, nullptr, false);
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_LList<T>::preappendElem(const T& elem) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_LIST_IMPL_FILE, 539);
  Node* node = newNode(elem, 542);
  if (!node) return VX_RET_ERR_MEM;
  link(node, nullptr, true);
  if (this->cur.node) ++this->cur.index;  // same element, one place further
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_LList<T>::insElemAtCur(VX_INS_METHOD method, const T& elem) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_LIST_IMPL_FILE, 575);
  if (!this->nElems) return appendElem(elem);
  if (!curNode()) return VX_reportFail(VX_RET_ERR_CALL, VX_LIST_IMPL_FILE, 579);
  Node* node = newNode(elem, 583);
  if (!node) return VX_RET_ERR_MEM;
  linkAtCur(method, node);
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_LList<T>::insElems(VX_INS_METHOD method, unsigned int index, unsigned int count) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_LIST_IMPL_FILE, 454);
  VX_IteratorElem<T> before = this->cur;
  if (setCurIndex(index) == VX_RET_FALSE) return VX_RET_FALSE;
  // All nodes are had before any is linked, so a failure changes nothing.
  VX_LList fresh;
  const T blank{};
  for (unsigned int i = 0; i < count; ++i) {
    Node* node = newNode(blank, 583);
    if (!node) {
      this->cur = before;
      return VX_RET_ERR_MEM;
    }
    fresh.link(node, nullptr, false);
  }
  while (Node* node = fresh.head) {
    fresh.unlink(node);
    linkAtCur(method, node);
  }
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_LList<T>::delCurElem(unsigned char advance) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_LIST_IMPL_FILE, 649);
  Node* node = curNode();
  if (!node) return VX_RET_FALSE;
  unsigned int index = this->cur.index;
  Node* next = node->next;
  if (node != head && node == tail) {
    next = node->prev;
    --index;
  }
  unlink(node);
  VX_deleteObject(node);
  if (!this->nElems) {
    head = tail = nullptr;
    this->clearCur();
    return VX_RET_TRUE;
  }
  pointCur(next, index);
  if (advance && curNode()) {
    if (curNode() == tail)
      this->clearCur();
    else
      pointCur(curNode()->next, this->cur.index + 1);
  }
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_LList<T>::delElems(unsigned int index, unsigned int count) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_LIST_IMPL_FILE, 483);
  if (setCurIndex(index) == VX_RET_FALSE) return VX_RET_FALSE;
  for (unsigned int i = 0; i < count && curNode(); ++i) {
    VX_RET_STATUS st = delCurElem(curAtLast());
    if (st > 2) return st;
  }
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_LList<T>::delElem(const T& elem) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_LIST_IMPL_FILE, 334);
  Node* curN = curNode();
  bool metCursor = false;
  for (Node* node = head; node; node = node->next) {
    if (node == curN) metCursor = true;
    if (&node->data != &elem && !(node->data == elem)) continue;
    if (node == curN) {
      if (node->next)
        pointCur(node->next, this->cur.index);
      else if (node->prev)
        pointCur(node->prev, this->cur.index - 1);
      else
        this->clearCur();
    } else if (curN && !metCursor) {
      --this->cur.index;  // one element fewer in front of the cursor
    }
    unlink(node);
    VX_deleteObject(node);
    if (!this->nElems) {
      head = tail = nullptr;
      this->clearCur();
    }
    return VX_RET_TRUE;
  }
  return VX_RET_FALSE;
}

template <class T>
VX_RET_STATUS VX_LList<T>::delAll() {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_LIST_IMPL_FILE, 396);
  if (!this->nElems) return VX_RET_TRUE;
  setCurFirst();
  while (curNode()) {
    VX_RET_STATUS st = delCurElem(0);
    if (st > 2) return st;
  }
  return VX_RET_TRUE;
}

// ---- VX_LList: element access and cursor -----------------------------------------------

template <class T>
T& VX_LList<T>::operator[](unsigned int index) {
  return const_cast<T&>(static_cast<const VX_LList<T>&>(*this)[index]);
}

template <class T>
const T& VX_LList<T>::operator[](unsigned int index) const {
  VX_setUserError(0);
  if (!enabled || !this->nElems) {
    VX_reportErrorMsg(VX_LIST_IMPL_FILE, 423, "VX_LList: element access", "Linked list is empty");
    return VX_nullRef<T>();
  }
  Node* node = nodeAt(index);
  if (!node) {
    VX_reportErrorMsg(VX_LIST_IMPL_FILE, 436, "VX_LList: element access", "Index %d not in [%d,%d]",
                      static_cast<int>(index), 0, static_cast<int>(this->nElems) - 1);
    return VX_nullRef<T>();
  }
  return node->data;
}

template <class T>
unsigned char VX_LList<T>::curIsNull() {
  VX_setUserError(0);
  return !enabled || !curNode();
}

template <class T>
unsigned char VX_LList<T>::curAtFirst() {
  VX_setUserError(0);
  if (!enabled) {
    VX_reportStatus(VX_RET_ERR_OBJ, VX_LIST_IMPL_FILE, 741);
    return 6;
  }
  return curNode() && curNode() == head;
}

template <class T>
unsigned char VX_LList<T>::curAtLast() {
  VX_setUserError(0);
  if (!enabled) {
    VX_reportStatus(VX_RET_ERR_OBJ, VX_LIST_IMPL_FILE, 756);
    return 6;
  }
  return curNode() && curNode() == tail;
}

template <class T>
VX_RET_STATUS VX_LList<T>::setCurFirst() {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_LIST_IMPL_FILE, 771);
  pointCur(head, 0);
  return head ? VX_RET_TRUE : VX_RET_FALSE;
}

template <class T>
VX_RET_STATUS VX_LList<T>::setCurLast() {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_LIST_IMPL_FILE, 793);
  pointCur(tail, this->nElems);  // the count, not the last position
  return tail ? VX_RET_TRUE : VX_RET_FALSE;
}

template <class T>
VX_RET_STATUS VX_LList<T>::setCurPrev() {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_LIST_IMPL_FILE, 815);
  if (!curNode()) return VX_RET_FALSE;
  pointCur(curNode()->prev, this->cur.index - 1);
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_LList<T>::setCurNext() {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_LIST_IMPL_FILE, 837);
  if (!curNode()) return VX_RET_FALSE;
  pointCur(curNode()->next, this->cur.index + 1);
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_LList<T>::getCurIndex(unsigned int& index) {
  VX_setUserError(0);
  index = 0;
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_LIST_IMPL_FILE, 858);
  if (!curNode()) return VX_RET_FALSE;
  index = this->cur.index;
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_LList<T>::setCurIndex(unsigned int index) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_LIST_IMPL_FILE, 880);
  Node* node = nodeAt(index);
  pointCur(node, index);
  return node ? VX_RET_TRUE : VX_RET_FALSE;
}

template <class T>
VX_RET_STATUS VX_LList<T>::getCurElem(T** elem) {
  VX_setUserError(0);
  if (!elem) return VX_reportFail(VX_RET_ERR_ARG, VX_LIST_IMPL_FILE, 903);
  *elem = nullptr;
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_LIST_IMPL_FILE, 907);
  if (!curNode()) return VX_reportFail(VX_RET_ERR_GEN, VX_LIST_IMPL_FILE, 909);
  *elem = this->cur.elem;
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_LList<T>::setCurElem(const T& elem) {
  VX_setUserError(0);
  return this->cursorSearch(elem, VX_LIST_IMPL_FILE, __LINE__);
}

#endif  // VX_LIST_IMPL_H
