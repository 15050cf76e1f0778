/// \file
/// The interface every container of the library shares: element count and membership
/// (VX_Container), index addressing and the bulk operations built on it (VX_OrdContainer),
/// the built-in cursor with its re-entrancy lock (VX_I_Iterator), and their union
/// (VX_IndContainer). The virtual slot order of these classes is the library's binary
/// interface: new virtual functions are never added here, and none are reordered.
#ifndef VX_CONTAINER_H
#define VX_CONTAINER_H

#include <cstring>
#include <type_traits>
#include <utility>

#include "vx_globals.h"
#include "vx_mem.h"
#include "vx_str.h"
#include "vx_vorlaxe.h"

/// On which side of `index` new elements go. Any value other than VX_INS_BEFORE acts as
/// VX_INS_AFTER.
enum VX_INS_METHOD : int { VX_INS_BEFORE = 0, VX_INS_AFTER = 1 };

/// Whether `copy` really holds what was copied from `src` (pass 0 as the third argument).
/// Library objects that fail to copy end up disabled; a string assigned while memory runs
/// out silently becomes the null string. Types without objIsEnabled always copy.
///@{
template <class T>
inline auto VX_copyTook(const T& copy, const T&, int) -> decltype(copy.objIsEnabled(), bool()) {
  return copy.objIsEnabled();
}
template <class T>
inline bool VX_copyTook(const T&, const T&, long) {
  return true;
}
inline bool VX_copyTook(const VX_String& copy, const VX_String& src, int) {
  return copy.objIsEnabled() &&
         (static_cast<const char*>(src) == nullptr || static_cast<const char*>(copy) != nullptr);
}
///@}

/// The one way a container stores a copy of an element: assigns and tells whether the copy
/// took. An assignment that was refused (it hands back the sink rather than `dst`) or that ran
/// out of memory (VX_copyTook) answers false; the container then undoes its change and
/// returns VX_RET_ERR_MEM.
template <class T>
inline bool VX_assignElem(T& dst, const T& src) {
  T& result = (dst = src);
  return &result == &dst && VX_copyTook(dst, src, 0);
}

/// Exchanges two elements without copying either, so it cannot fail: this is how containers
/// move the elements they hold (growing, shifting, splitting). Types with a non-throwing move
/// are swapped by it; the others exchange their bytes, which needs an element type that
/// holds no pointer into itself (none of the library's element types does).
template <class T>
inline void VX_swapElems(T& a, T& b) {
  if constexpr (std::is_nothrow_move_constructible<T>::value &&
                std::is_nothrow_move_assignable<T>::value) {
    T t(std::move(a));
    a = std::move(b);
    b = std::move(t);
  } else {
    if (&a == &b) return;
    alignas(T) unsigned char t[sizeof(T)];
    std::memcpy(t, static_cast<const void*>(&a), sizeof(T));
    std::memcpy(static_cast<void*>(&a), static_cast<const void*>(&b), sizeof(T));
    std::memcpy(static_cast<void*>(&b), t, sizeof(T));
  }
}

/// Gives `elem` the cleared value (a default T) without an assignment that could be refused.
template <class T>
inline void VX_clearElem(T& elem) {
  T blank{};
  VX_swapElems(elem, blank);
}

template <class K, class D>
class VX_HashTable;

/// VX_IteratorElem: the cursor. `elem` null means "no current element". `node` is the list
/// node holding the element for the linked list and the block holding it for the chunked
/// array; the array leaves it null. A plain value that owns nothing.
template <class T>
struct VX_IteratorElem {
  unsigned int index;  ///< position of the current element (meaningless while `elem` is null)
  T* elem;  ///< the current element inside the container, or null
  void* node;  ///< the list node or chunk block holding `elem`, or null

  /// The null cursor.
  VX_IteratorElem() : index(0), elem(nullptr), node(nullptr) {}
  /// Sets index and element; `node` is left for the caller to set.
  void set(unsigned int i, T* e) {
    index = i;
    elem = e;
  }
};

/// VX_Container: holds the element count; membership is left to the concrete container.
/// Owns nothing. Every container of the library stores elements by value (copies of what
/// it is handed), compares them with `==`, and disables itself when its construction
/// cannot get memory: every operation on a disabled container then reports VX_RET_ERR_OBJ.
template <class T>
class VX_API VX_Container : public VX_VorlaxeClass {
 public:
  /// An empty container.
  VX_Container() : nElems(0) {}
  ~VX_Container() override {}

  /// The number of elements held.
  unsigned int numElems() const {
    VX_setUserError(0);
    return nElems;
  }

  /// 1 when an element equal to `elem` is held; 0 otherwise, and 0 with VX_RET_ERR_OBJ
  /// reported for a disabled container. The cursor is left where it was.
  virtual unsigned char hasElem(const T& elem) = 0;
  /// Appends a copy of `elem` (no duplicate check). VX_RET_ERR_MEM when memory runs out or the
  /// copy fails, nothing added.
  virtual VX_RET_STATUS addElem(const T& elem) = 0;
  /// Removes the first element equal to `elem`; VX_RET_FALSE when there is none. The cursor is
  /// moved by the search: it ends on the element that followed the removed one (the new last
  /// one when the last went; cleared when none is equal). The list keeps its cursor instead.
  virtual VX_RET_STATUS delElem(const T& elem) = 0;
  /// Removes every element and clears the cursor; the array and the chunked array answer
  /// VX_RET_FALSE when there was none, and the array gives its block back.
  virtual VX_RET_STATUS delAll() = 0;

 protected:
  unsigned int nElems;  ///< the count read by numElems()
};

/// VX_OrdContainer: index-addressed access. The bulk operations here are written once on top
/// of the concrete container's primitives; they return a primitive's failure unchanged.
template <class T>
class VX_API VX_OrdContainer : public VX_Container<T> {
 public:
  /// Makes room with insElems and stores `elem` at `index`, also under VX_INS_AFTER (where
  /// the new slot is index+1): the element at `index` is overwritten and the new slot keeps
  /// its default value, unless `index` is at or past the end, where `elem` is appended.
  /// Callers rely on this. VX_RET_FALSE (nothing inserted) when insElems gives it.
  virtual VX_RET_STATUS insElem(VX_INS_METHOD method, unsigned int index, const T& elem);
  /// Appends the elements of `src` (those not yet held, when duplicates are not allowed; the
  /// test is repeated while writing, so a value repeated in `src` is written once and its
  /// second slot keeps the default value; where no room can be made in advance, as in an
  /// empty list, the elements are appended one by one and a repeat is simply skipped). A
  /// failure adds nothing. `src` being this container: VX_RET_FALSE.
  virtual VX_RET_STATUS addElems(VX_OrdContainer<T>& src, unsigned char allowDuplicates);
  /// delElem for every element of `src`, in index order; absent ones are skipped. `src`
  /// being this container: VX_RET_FALSE, nothing removed.
  virtual VX_RET_STATUS removeElems(VX_OrdContainer<T>& src);
  /// First position holding `elem`; VX_RET_FALSE with `index == numElems()` when absent.
  virtual VX_RET_STATUS findElemIndex(const T& elem, unsigned int& index);
  /// The element at `index`, owned by the container: the reference holds until that element
  /// moves or goes. Outside the container (or on a disabled one) the access is reported and
  /// the reference is to the sink VX_NULL_PTR, whose contents mean nothing.
  virtual T& operator[](unsigned int index) = 0;
  /// Opens `count` slots holding the cleared value (a default T) before or after the element
  /// at `index`. The arrays answer VX_RET_FALSE, nothing inserted, when `count` is 0. Past the
  /// end the array
  /// inserts after the last element and the chunked array next to it on the side `method`
  /// gives; the list inserts nothing there (VX_RET_FALSE), and so nothing into an empty list,
  /// where the arrays simply make `count` slots. VX_RET_ERR_MEM, nothing changed, when memory
  /// runs out.
  virtual VX_RET_STATUS insElems(VX_INS_METHOD method, unsigned int index, unsigned int count) = 0;
  /// Removes `count` elements from `index` on, clipped to the end; VX_RET_FALSE when `index`
  /// is past the end (and, for the arrays, when `count` is 0).
  virtual VX_RET_STATUS delElems(unsigned int index, unsigned int count) = 0;
  /// Adds a copy of `elem` at the end / at the front; `elem` may be an element of this very
  /// container. VX_RET_ERR_MEM, nothing added, when memory runs out or the copy fails.
  ///@{
  virtual VX_RET_STATUS appendElem(const T& elem) = 0;
  virtual VX_RET_STATUS preappendElem(const T& elem) = 0;
  ///@}
};

/// VX_I_Iterator: the cursor and the one-byte re-entrancy lock. The lock is no mutex: it only
/// turns a walk started from inside another walk over the same container into
/// VX_RET_ERR_ILOCK. Copy assignment copies the flags and the cursor as they are.
template <class T>
class VX_API VX_I_Iterator : public VX_VorlaxeClass {
 public:
  /// A null cursor and a free lock.
  VX_I_Iterator() { initDataMembers(); }
  ~VX_I_Iterator() override { cleanupDataMembers(); }
  /// Copies the flags, the lock and the cursor as they are (a copied cursor points into the
  /// other container). The containers' own assignments do not use it: they keep or reset
  /// their own cursor.
  VX_I_Iterator& operator=(const VX_I_Iterator& other);

  /// The element at `index`, as the ordered container's operator[].
  virtual T& operator[](unsigned int index) = 0;
  /// 1 when there is no current element (also for a disabled container).
  virtual unsigned char curIsNull() = 0;
  /// 1 when the cursor is on the first / the last element, 0 otherwise (a null cursor
  /// included); 6 with VX_RET_ERR_OBJ reported for a disabled container.
  ///@{
  virtual unsigned char curAtFirst() = 0;
  virtual unsigned char curAtLast() = 0;
  ///@}
  /// Puts the cursor on the first / the last element; VX_RET_FALSE with a null cursor when the
  /// container is empty.
  ///@{
  virtual VX_RET_STATUS setCurFirst() = 0;
  virtual VX_RET_STATUS setCurLast() = 0;
  ///@}
  /// Moves the cursor one element back / on. Stepping off either end clears the cursor; the
  /// arrays then answer VX_RET_FALSE, the list VX_RET_TRUE, so a walk tests curIsNull after
  /// each step. A null cursor stays null (VX_RET_FALSE).
  ///@{
  virtual VX_RET_STATUS setCurPrev() = 0;
  virtual VX_RET_STATUS setCurNext() = 0;
  ///@}
  /// The cursor's position; VX_RET_FALSE with `index` 0 for a null cursor.
  virtual VX_RET_STATUS getCurIndex(unsigned int& index) = 0;
  /// Puts the cursor on the element at `index`; past the end the cursor is cleared
  /// (VX_RET_FALSE).
  virtual VX_RET_STATUS setCurIndex(unsigned int index) = 0;
  /// Stores in `*elem` a pointer to the current element, owned by the container and valid
  /// until that element moves or goes. A null cursor gives a null pointer and VX_RET_FALSE
  /// (VX_RET_ERR_GEN for the list); a null `elem` is VX_RET_ERR_ARG.
  virtual VX_RET_STATUS getCurElem(T** elem) = 0;
  /// A search, not an assignment: puts the cursor on the first element equal to `elem`;
  /// VX_RET_FALSE with the cursor cleared when there is none. It takes the lock while it
  /// walks; a held lock is reported (VX_RET_ERR_ILOCK) and the search goes on regardless.
  virtual VX_RET_STATUS setCurElem(const T& elem) = 0;

  /// Takes the lock; a held lock is reported (VX_RET_ERR_ILOCK) and left as it is.
  VX_RET_STATUS lock();
  /// Frees the lock; VX_RET_FALSE when it was free.
  VX_RET_STATUS unlock();
  /// 1 while the lock is held.
  unsigned char isLocked() const {
    VX_setUserError(0);
    return locked;
  }

 protected:
  unsigned char iterEnabled;  ///< set by construction, cleared by destruction; nothing reads it
  unsigned char locked;  ///< the re-entrancy lock
  VX_IteratorElem<T> cur;  ///< the cursor

  /// Makes the cursor null.
  void clearCur() { cur = VX_IteratorElem<T>(); }

 private:
  VX_RET_STATUS initDataMembers();
  VX_RET_STATUS cleanupDataMembers();
};

/// VX_IndContainer: an ordered container with a cursor. Implements membership through the
/// cursor and index primitives, and holds the index-based cursor mechanics that the array
/// and the chunked array share (each passes its own report file and lines).
template <class T>
class VX_API VX_IndContainer : public VX_OrdContainer<T>, public VX_I_Iterator<T> {
 public:
  /// As the container's hasElem: a cursor walk that gives the cursor back unchanged.
  unsigned char hasElem(const T& elem) override;
  /// As the ordered container's search, but walked with the cursor (given back unchanged), so
  /// that containers slow to index, like the list, are scanned in linear time.
  VX_RET_STATUS findElemIndex(const T& elem, unsigned int& index) override;
  /// Appends: no duplicate check.
  VX_RET_STATUS addElem(const T& elem) override;
  /// Removes the first equal element; VX_RET_FALSE when there is none.
  VX_RET_STATUS delElem(const T& elem) override;
  /// The element at `index`, as the ordered container's operator[].
  T& operator[](unsigned int index) override = 0;
  /// 0 once construction failed for lack of memory (and after destruction).
  virtual unsigned char objIsEnabled() const = 0;
  /// insElem at the cursor's index (position 0 for a null cursor), with its overwriting rule
  /// for VX_INS_AFTER; VX_RET_TRUE also when insElem answered VX_RET_FALSE.
  virtual VX_RET_STATUS insertElemAtCur(VX_INS_METHOD method, const T& elem);
  /// Removes the current element; VX_RET_FALSE for a null cursor. The cursor then rests on the
  /// element that followed it (on the new last one when the last went, null when the container
  /// is empty). With `advance` it takes one step more, which skips the element that followed.
  virtual VX_RET_STATUS delCurElem(unsigned char advance) = 0;

 protected:
  template <class K, class D>
  friend class VX_HashTable;  ///< walks its buckets with seekCur

  /// The one cursor walk: from the first element on, puts the cursor on the first element
  /// for which `stop(element)` answers true and returns it; null, with the cursor cleared,
  /// when none does. Locking is the caller's: the walks differ in what a held lock means.
  template <class Stop>
  T* seekCur(Stop stop);
  /// Position of the first element equal to `elem` (numElems() when none), by a cursor walk
  /// that leaves the cursor as it found it.
  unsigned int scanFor(const T& elem);
  /// The cursor search of setCurElem, under the lock.
  VX_RET_STATUS cursorSearch(const T& elem, const char* file, unsigned line);
  /// curAtFirst (last false) / curAtLast (last true) for an index cursor; 6 when not enabled.
  unsigned char cursorAtEnd(bool last, const char* file, unsigned line);
  /// setCurFirst / setCurLast through setCurIndex; its failure is reported again at lineAgain.
  VX_RET_STATUS cursorToEnd(bool last, const char* file, unsigned line, unsigned lineAgain);
  /// getCurIndex for an index cursor; reports carry `file` and `line`.
  VX_RET_STATUS cursorIndex(unsigned int& index, const char* file, unsigned line);
  /// getCurElem for an index cursor; a null `elem` is reported at `lineArg`.
  VX_RET_STATUS cursorElem(T** elem, const char* file, unsigned lineArg, unsigned line);
};

#include "vx_iterator_impl.h"

/// The library's own instantiations of the interface; hosts and the library's other sources
/// reuse them.
/// `VX_CONTAINER_INTERFACE_INSTANCES(extern, T)` in a header and
/// `VX_CONTAINER_INTERFACE_INSTANCES(, T)` in the source that exports them name the four
/// interface classes of one element type.
#define VX_CONTAINER_INTERFACE_INSTANCES(EXTERN, ...)                 \
  EXTERN template class VX_API_##EXTERN VX_Container<__VA_ARGS__>;    \
  EXTERN template class VX_API_##EXTERN VX_OrdContainer<__VA_ARGS__>; \
  EXTERN template class VX_API_##EXTERN VX_I_Iterator<__VA_ARGS__>;   \
  EXTERN template class VX_API_##EXTERN VX_IndContainer<__VA_ARGS__>;

VX_CONTAINER_INTERFACE_INSTANCES(extern, unsigned int)
VX_CONTAINER_INTERFACE_INSTANCES(extern, VX_String)

#endif
