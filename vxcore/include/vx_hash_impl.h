// Bodies of VX_HashEntry and VX_HashTable. Included by vx_hash.h; reports carry this
// header's label and the table's fixed line numbers.
#ifndef VX_HASH_IMPL_H
#define VX_HASH_IMPL_H

#include "vx_hash.h"

#define VX_HASH_IMPL_FILE "vxcore/include/vx_hash_impl"

// ---- VX_HashEntry ------------------------------------------------------------------------

template <class K, class D>
VX_HashEntry<K, D>::VX_HashEntry() : key(), data() {
  VX_setUserError(0);
  initDataMembers();
}

template <class K, class D>
VX_HashEntry<K, D>::VX_HashEntry(const K& k, const D& d) : key(k), data(d) {
  VX_setUserError(0);
  initDataMembers();
  enabled = VX_copyTook(key, k, 0) && VX_copyTook(data, d, 0);
}

template <class K, class D>
VX_HashEntry<K, D>::VX_HashEntry(const VX_HashEntry& other) : VX_VorlaxeClass(), key(other.key), data(other.data) {
  VX_setUserError(0);
  initDataMembers();
  enabled = other.enabled && VX_copyTook(key, other.key, 0) && VX_copyTook(data, other.data, 0);
}

template <class K, class D>
VX_HashEntry<K, D>::~VX_HashEntry() {
  cleanupDataMembers();
}

template <class K, class D>
VX_HashEntry<K, D>& VX_HashEntry<K, D>::operator=(const VX_HashEntry& other) {
  VX_setUserError(0);
  if (&other == this) return *this;
  bool keyTook = VX_assignElem(key, other.key);
  bool dataTook = VX_assignElem(data, other.data);
  enabled = other.enabled && keyTook && dataTook;
  return *this;
}

template <class K, class D>
unsigned char VX_HashEntry<K, D>::operator==(const VX_HashEntry& other) const {
  VX_setUserError(0);
  if (!enabled || !other.enabled) {
    VX_reportStatus(VX_RET_ERR_OBJ, VX_HASH_IMPL_FILE, 124);
    return 0;
  }
  if (&other == this) return 1;
  return key == other.key && data == other.data;
}

template <class K, class D>
void VX_HashEntry<K, D>::initDataMembers() {
  enabled = 1;
}

template <class K, class D>
void VX_HashEntry<K, D>::cleanupDataMembers() {
  enabled = 0;
}

// ---- VX_HashTable ------------------------------------------------------------------------

template <class K, class D>
VX_HashTable<K, D>::VX_HashTable(unsigned int n, HashFunc h, EntryFunc release) {
  VX_setUserError(0);
  if (initDataMembers(n) > 2) return;
  hashFunc = h;
  releaseFunc = release;
}

template <class K, class D>
VX_HashTable<K, D>::~VX_HashTable() {
  VX_setUserError(0);
  cleanupDataMembers();
}

template <class K, class D>
VX_RET_STATUS VX_HashTable<K, D>::initDataMembers(unsigned int n) {
  enabled = 0;
  size = 0;
  nEntries = 0;
  hashFunc = nullptr;
  releaseFunc = nullptr;
  buckets = VX_newObject<VX_Array<Bucket>>(n, static_cast<unsigned char>(0));
  if (buckets && !buckets->objIsEnabled()) {
    VX_deleteObject(buckets);
    buckets = nullptr;
  }
  if (!buckets) return VX_reportFail(VX_RET_ERR_MEM, VX_HASH_IMPL_FILE, 208);
  size = n;
  enabled = 1;
  return VX_RET_TRUE;
}

template <class K, class D>
VX_RET_STATUS VX_HashTable<K, D>::cleanupDataMembers() {
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_HASH_IMPL_FILE, 225);
  if (releaseFunc) walk(releaseFunc, false);  // every entry, whatever the function answers
  VX_deleteObject(buckets);
  buckets = nullptr;
  enabled = 0;
  nEntries = 0;
  return VX_RET_TRUE;
}

template <class K, class D>
typename VX_HashTable<K, D>::Bucket* VX_HashTable<K, D>::bucketOf(const K& key, unsigned line) {
  unsigned int b = hashFunc ? hashFunc(key, size) : 0;
  if (b >= size) {
    VX_reportStatus(VX_RET_ERR_GEN, VX_HASH_IMPL_FILE, line);
    return nullptr;
  }
  return &buckets->data[b];  // b < size, the bucket count
}

// The chain is read node by node and the bucket's cursor is left alone, so a lookup made
// from inside a walk over the same bucket (a callback of iterate) leaves that walk where it
// was; the held lock is reported and the lookup goes on.
template <class K, class D>
typename VX_HashTable<K, D>::Entry* VX_HashTable<K, D>::getEntryPtr(const K& key) {
  if (!enabled) {
    VX_reportStatus(VX_RET_ERR_OBJ, VX_HASH_IMPL_FILE, 303);
    return nullptr;
  }
  Bucket* list = bucketOf(key, 316);
  if (!list) return nullptr;
  bool owner = list->lock() == VX_RET_TRUE;
  Entry* found = nullptr;
  for (VX_LNode<Entry>* node = list->head; node && !found; node = node->next)
    if (node->data.key == key) found = &node->data;
  if (owner) list->unlock();
  return found;
}

template <class K, class D>
VX_RET_STATUS VX_HashTable<K, D>::addEntry(const K& key, const D& data) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_HASH_IMPL_FILE, 441);
  if (getEntryPtr(key)) return VX_RET_FALSE;
  Bucket* list = bucketOf(key, 464);
  if (!list) return VX_RET_ERR_GEN;
  if (list->isLocked()) return VX_reportFail(VX_RET_ERR_ILOCK, VX_HASH_IMPL_FILE, 472);
  Entry entry(key, data);
  if (!entry.enabled) return VX_RET_ERR_MEM;  // the failed copy of the key or data has reported
  // The list copies the entry once more; a copy that fails there has reported, is never
  // linked, and the list answers VX_RET_ERR_MEM.
  VX_RET_STATUS st = list->preappendElem(entry);
  if (st > 2) return st;
  ++nEntries;
  return VX_RET_TRUE;
}

// Deleting from the bucket that iterate is walking would pull the entry from under the
// walk, so it is refused with VX_RET_ERR_ILOCK.
template <class K, class D>
VX_RET_STATUS VX_HashTable<K, D>::deleteEntry(const K& key) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_HASH_IMPL_FILE, 497);
  Bucket* list = bucketOf(key, 506);
  if (!list) return VX_RET_ERR_GEN;
  VX_RET_STATUS st = list->lock();
  if (st > 2) return st;
  Entry* e = list->seekCur([&](const Entry& held) { return held.key == key; });
  if (!e) {
    list->unlock();
    return VX_RET_FALSE;
  }
  if (releaseFunc) releaseFunc(e->key, e->data);
  --nEntries;
  st = list->delCurElem(0);
  list->unlock();
  return st > 2 ? st : VX_RET_TRUE;
}

template <class K, class D>
VX_RET_STATUS VX_HashTable<K, D>::hasEntry(const K& key) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_HASH_IMPL_FILE, 381);
  return getEntryPtr(key) ? VX_RET_TRUE : VX_RET_FALSE;
}

template <class K, class D>
VX_RET_STATUS VX_HashTable<K, D>::getEntryData(const K& key, D& data) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_HASH_IMPL_FILE, 399);
  Entry* e = getEntryPtr(key);
  if (!e) return VX_RET_FALSE;
  // Copied aside and exchanged in, so a failed copy leaves `data` as it was.
  D copy(e->data);
  if (!VX_copyTook(copy, e->data, 0)) return VX_reportFail(VX_RET_ERR_MEM, VX_HASH_IMPL_FILE, 399);
  VX_swapElems(data, copy);
  return VX_RET_TRUE;
}

template <class K, class D>
VX_RET_STATUS VX_HashTable<K, D>::setEntryData(const K& key, const D& data) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_HASH_IMPL_FILE, 419);
  Entry* e = getEntryPtr(key);
  if (!e) return VX_RET_FALSE;
  if (&e->data == &data) return VX_RET_TRUE;
  // Copied aside and exchanged in, so a failed copy leaves the entry as it was.
  D copy(data);
  if (!VX_copyTook(copy, data, 0)) return VX_reportFail(VX_RET_ERR_MEM, VX_HASH_IMPL_FILE, 419);
  VX_swapElems(e->data, copy);
  return VX_RET_TRUE;
}

template <class K, class D>
VX_RET_STATUS VX_HashTable<K, D>::iterate(EntryFunc callback) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_HASH_IMPL_FILE, 548);
  if (!callback) return VX_reportFail(VX_RET_ERR_ARG, VX_HASH_IMPL_FILE, 550);
  return walk(callback, true);
}

// A bucket whose lock is held already (iterate called from its own callback) has the lock
// reported; iterate stops there, the final walk goes through it all the same.
template <class K, class D>
VX_RET_STATUS VX_HashTable<K, D>::walk(EntryFunc callback, bool stopOnFailure) {
  for (unsigned int b = 0; b < size; ++b) {
    Bucket& list = (*buckets)[b];
    VX_RET_STATUS st = list.lock();
    bool owner = st == VX_RET_TRUE;
    if (!owner && stopOnFailure) return st;
    list.seekCur([&](Entry& e) {
      st = callback(e.key, e.data);
      return st > 2 && stopOnFailure;
    });
    if (owner) list.unlock();
    if (st > 2 && stopOnFailure) return st;
  }
  return VX_RET_TRUE;
}

#endif
