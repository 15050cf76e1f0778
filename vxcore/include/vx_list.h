/// \file
/// VX_LNode and VX_LList: the doubly linked list of the container family.
#ifndef VX_LIST_H
#define VX_LIST_H

#include "vx_container.h"
#include "vx_str.h"

template <class T>
class VX_VCArray;

/// VX_LNode<T>: one element of a list, held by value, and its two links. Nodes are heap
/// objects owned by their list and deleted through the virtual destructor. The element is
/// copy-constructed; a copy that did not take (an element type that ends up disabled) leaves
/// the node disabled, and the list never links such a node. Assignment copies the element
/// only; links belong to the list.
template <class T>
class VX_API VX_LNode : public VX_VorlaxeClass {
 public:
  /// An unlinked node holding a copy of `value` (disabled when the copy did not take).
  explicit VX_LNode(const T& value);
  /// Destroys the element; the links are not followed.
  ~VX_LNode() override;
  /// Assigns the element only (an element copy that fails is the element type's to report).
  VX_LNode& operator=(const VX_LNode& other);
  /// 0 when the element's copy did not take.
  unsigned char objIsEnabled() const { return enabled; }

  unsigned char enabled;  ///< see objIsEnabled
  T data;  ///< the element
  VX_LNode* next;  ///< null at the tail
  VX_LNode* prev;  ///< null at the head

 private:
  void initDataMembers();
  void cleanupDataMembers();
};

/// VX_LList<T>: owns one heap node per element. Insertion and removal at the cursor, head and
/// tail touch no other element; access by index walks the chain. The cursor holds the node.
/// Its quirks are deliberate and callers depend on them: setCurLast gives the index count,
/// not count - 1; setCurNext and setCurPrev answer VX_RET_TRUE when they step off the list
/// (so a walk tests curIsNull after each step); insElemAtCur before the cursor leaves the
/// cursor index one above the new node's position; getCurElem on a null cursor is
/// VX_RET_ERR_GEN. A failed allocation leaves the list unchanged. Assignment copies the
/// elements (so lists can be array elements); equality compares them in order.
template <class T>
class VX_API VX_LList : public VX_IndContainer<T> {
 public:
  /// An empty list with a null cursor; it needs no memory, so it is always enabled.
  VX_LList();
  /// Deletes every node with its element.
  ~VX_LList() override;
  /// Replaces the elements by copies of `src`'s, built aside first: running out of memory
  /// (reported) leaves this list as it was. The cursor is cleared. A disabled side is
  /// reported (VX_RET_ERR_OBJ) and nothing changes.
  VX_LList& operator=(const VX_LList& src);
  /// 1 when both hold equal elements in the same order.
  unsigned char operator==(const VX_LList& other) const;

  /// Removes the first node holding `elem` itself or an equal value; the cursor stays on its
  /// element (its index follows), or moves on when its own node goes.
  VX_RET_STATUS delElem(const T& elem) override;
  VX_RET_STATUS delAll() override;
  T& operator[](unsigned int index) override;
  /// Reading needs no cursor, so a const list reads its elements (same reports and sink).
  const T& operator[](unsigned int index) const;
  /// Nothing is inserted when `index` is past the end (VX_RET_FALSE), hence nothing into an
  /// empty list. The cursor is moved to `index` (with VX_INS_BEFORE it ends on the first new
  /// node with its index `count` too high, as insElemAtCur leaves it).
  VX_RET_STATUS insElems(VX_INS_METHOD method, unsigned int index, unsigned int count) override;
  VX_RET_STATUS delElems(unsigned int index, unsigned int count) override;
  VX_RET_STATUS appendElem(const T& elem) override;
  VX_RET_STATUS preappendElem(const T& elem) override;
  unsigned char objIsEnabled() const override { return enabled; }
  VX_RET_STATUS delCurElem(unsigned char advance) override;
  /// Inserts next to the cursor's node; on an empty list appends; a null cursor on a
  /// non-empty list is VX_RET_ERR_CALL. Declared here, before the cursor overrides, so that
  /// it takes the slot right after delCurElem: overriders of the cursor's slots get entries
  /// of their own in this table, behind it.
  virtual VX_RET_STATUS insElemAtCur(VX_INS_METHOD method, const T& elem);

  unsigned char curIsNull() override;
  unsigned char curAtFirst() override;
  unsigned char curAtLast() override;
  VX_RET_STATUS setCurFirst() override;
  /// Puts the cursor on the last node, but with the element count as its index, not
  /// count - 1 (kept on purpose); VX_RET_FALSE, cursor null, when empty.
  VX_RET_STATUS setCurLast() override;
  VX_RET_STATUS setCurPrev() override;
  VX_RET_STATUS setCurNext() override;
  VX_RET_STATUS getCurIndex(unsigned int& index) override;
  VX_RET_STATUS setCurIndex(unsigned int index) override;
  VX_RET_STATUS getCurElem(T** elem) override;
  VX_RET_STATUS setCurElem(const T& elem) override;

 private:
  typedef VX_LNode<T> Node;
  template <class U>
  friend class VX_VCArray;
  template <class K, class D>
  friend class VX_HashTable;  ///< looks keys up along the chain without moving the cursor

  void initDataMembers();
  VX_RET_STATUS cleanupDataMembers();
  Node* curNode() const { return static_cast<Node*>(this->cur.node); }
  /// Puts the cursor on `node` with `index`; a null node clears it.
  void pointCur(Node* node, unsigned int index);
  /// The node at `index`, walking from the nearer end; null past the end.
  Node* nodeAt(unsigned int index) const;
  /// Links `node` before (`before` true) or after `at`; a null `at` means the front (before)
  /// or the back (after).
  void link(Node* node, Node* at, bool before);
  /// Detaches `node`; a cursor on it is cleared. The node is not deleted.
  void unlink(Node* node);
  /// Links a node next to the cursor's node as insElemAtCur does.
  void linkAtCur(VX_INS_METHOD method, Node* node);
  /// Moves every node of `from` behind `at` (to the front for a null `at`). The cursor's
  /// index is not adjusted: the chunked array keeps its block list's cursor itself.
  void spliceAfter(Node* at, VX_LList& from);
  static void freeChain(Node* first);
  /// A new unlinked node holding a copy of `elem`; null when the node (reported at `line`)
  /// or the copy (reported by the element) cannot be had, which callers answer with
  /// VX_RET_ERR_MEM.
  static Node* newNode(const T& elem, unsigned line);

  unsigned char enabled;
  Node* head;
  Node* tail;
};

#include "vx_list_impl.h"

extern template class VX_API VX_LNode<unsigned int>;
extern template class VX_API VX_LList<unsigned int>;
extern template class VX_API VX_LNode<VX_String>;
extern template class VX_API VX_LList<VX_String>;

#endif
