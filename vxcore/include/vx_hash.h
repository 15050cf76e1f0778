/// \file
/// The hash table VX_HashTable with its entries, and the library's default hash functions.
#ifndef VX_HASH_H
#define VX_HASH_H

#include "vx_array.h"
#include "vx_list.h"
#include "vx_str.h"
#include "vx_vararr.h"

/// VX_HashEntry: one key and its data, both held by value. An entry whose key or data could
/// not be copied (memory ran out) is not enabled; the table never keeps such an entry.
template <class K, class D>
class VX_API VX_HashEntry : public VX_VorlaxeClass {
 public:
  /// A default key with default data.
  VX_HashEntry();
  /// Copies of `key` and `data`; not enabled when either copy did not take.
  VX_HashEntry(const K& key, const D& data);
  /// Copies of the other entry's key and data; not enabled when the other is not or a copy
  /// did not take.
  VX_HashEntry(const VX_HashEntry& other);
  ~VX_HashEntry() override;
  /// Assigns key and data; the entry is enabled afterwards only when `other` is and both
  /// copies took.
  VX_HashEntry& operator=(const VX_HashEntry& other);
  /// Equal keys and equal data; both entries must be enabled (else VX_RET_ERR_OBJ and 0).
  unsigned char operator==(const VX_HashEntry& other) const;
  /// 0 when a copy of the key or data did not take.
  unsigned char objIsEnabled() const { return enabled; }

  unsigned char enabled;  ///< see objIsEnabled
  K key;  ///< the key; the table hashes it, so it is not to be changed while held
  D data;  ///< the data

 private:
  void initDataMembers();
  void cleanupDataMembers();
};

/// VX_HashTable: keys mapped to data by separate chaining over a bucket count fixed at
/// construction (the table never rehashes). The bucket of a key is hashFunc(key, size), or
/// 0 without a hash function; a hash function answering size or more makes the operation fail
/// with VX_RET_ERR_GEN and never touches the table. Each bucket is a linked list with the
/// newest entry first. The table owns copies of keys and data; releaseFunc, when given, sees
/// every entry just before the table lets go of it (deleteEntry and destruction). A table whose
/// buckets could not be allocated is not enabled and every operation reports VX_RET_ERR_OBJ.
/// A walk over a bucket holds that bucket's lock: adding to, deleting from or iterating the
/// bucket that iterate is walking is refused with VX_RET_ERR_ILOCK; a lookup there reports
/// the held lock and still answers.
template <class K, class D>
class VX_API VX_HashTable : public VX_VorlaxeClass {
 public:
  /// Maps a key to its bucket, a number below `size`.
  typedef unsigned int (*HashFunc)(const K& key, unsigned int size);
  /// Sees one held entry; it may change the data in place, not the key. A result of 3 or more
  /// is a failure.
  typedef VX_RET_STATUS (*EntryFunc)(K& key, D& data);
  typedef VX_HashEntry<K, D> Entry;  ///< one held key and its data
  typedef VX_LList<Entry> Bucket;  ///< one bucket's chain, newest entry first

  /// An empty table of `size` buckets. Without `hashFunc` every key goes to bucket 0 (one
  /// chain); a size of 0 makes every keyed operation fail with VX_RET_ERR_GEN. Not enabled,
  /// with VX_RET_ERR_MEM reported, when the buckets cannot be had.
  VX_HashTable(unsigned int size = 256, HashFunc hashFunc = nullptr, EntryFunc releaseFunc = nullptr);
  /// Hands every entry to releaseFunc (whatever it answers), then frees them and the buckets.
  ~VX_HashTable() override;

  /// 0 when the buckets could not be allocated.
  unsigned char objIsEnabled() const { return enabled; }
  /// The bucket count given at construction (0 when not enabled).
  unsigned int getSize() const { return size; }
  /// The number of entries held.
  unsigned int numEntries() const { return nEntries; }

  /// Adds copies of `key` and `data` at the front of the key's bucket. VX_RET_FALSE when the
  /// key is present already (its data stays); VX_RET_ERR_ILOCK when iterate is walking that
  /// bucket; VX_RET_ERR_MEM, nothing added, when memory runs out or a copy fails.
  VX_RET_STATUS addEntry(const K& key, const D& data);
  /// Hands the entry to releaseFunc, then removes it. VX_RET_FALSE when the key is absent;
  /// VX_RET_ERR_ILOCK, nothing removed, when iterate is walking that bucket.
  VX_RET_STATUS deleteEntry(const K& key);
  /// VX_RET_TRUE when the key is held, else VX_RET_FALSE.
  VX_RET_STATUS hasEntry(const K& key);
  /// Copies the data of `key` into `data`; VX_RET_FALSE (data untouched) when absent,
  /// VX_RET_ERR_MEM (data untouched) when the copy fails.
  VX_RET_STATUS getEntryData(const K& key, D& data);
  /// Replaces the data of `key` by a copy of `data`; VX_RET_FALSE when absent, VX_RET_ERR_MEM
  /// (the entry unchanged) when the copy fails.
  VX_RET_STATUS setEntryData(const K& key, const D& data);
  /// Calls `callback` for every entry, bucket by bucket; a result of 3 or more stops the walk
  /// and is returned. A null callback is VX_RET_ERR_ARG. Called from its own callback it walks
  /// the buckets before the one being walked again and stops there with VX_RET_ERR_ILOCK.
  VX_RET_STATUS iterate(EntryFunc callback);

 private:
  VX_HashTable(const VX_HashTable&);
  VX_HashTable& operator=(const VX_HashTable&);

  VX_RET_STATUS initDataMembers(unsigned int size);
  VX_RET_STATUS cleanupDataMembers();
  /// The bucket of `key`, or null after reporting VX_RET_ERR_GEN at `line`.
  Bucket* bucketOf(const K& key, unsigned line);
  Entry* getEntryPtr(const K& key);
  /// Calls `callback` for every entry, bucket by bucket. With stopOnFailure a result of 3 or
  /// more ends the walk and is returned; without it every entry is seen (the final release).
  VX_RET_STATUS walk(EntryFunc callback, bool stopOnFailure);

  unsigned char enabled;
  unsigned int size;
  unsigned int nEntries;
  HashFunc hashFunc;
  EntryFunc releaseFunc;
  VX_Array<Bucket>* buckets;
};

#include "vx_hash_impl.h"

/// The default hash functions. The string hash is multiplicative hashing with the golden
/// ratio (0.618034 as a float) over h = 2h + c taken in double precision; a key without text
/// gives `size`, which the table rejects. The variant hash prints the value first ("%c", "%u",
/// "%d", "%ld", "%p", "%f", "%lf" by kind; a string as it is) and hashes the text, so the
/// integer 65 and the text "65" share a bucket. The variant-array hash carries one float
/// accumulator across the elements and sums their contributions modulo 2^32. Kinds that cannot
/// be printed report VX_RET_ERR_ARG and give `size`; a size of 0 gives 0.
///@{
VX_API unsigned int VX_defHashFuncStringKey(const VX_String& key, unsigned int size);
VX_API unsigned int VX_defHashFuncVarKey(const VX_Var& key, unsigned int size);
VX_API unsigned int VX_defHashFuncVarArrKey(const VX_VarArr& key, unsigned int size);
///@}

/// Strong hash functions, drop-in replacements for the two defaults above. The defaults' values
/// are fixed (tables and files made with them rely on the buckets they give), but they spread
/// keys badly: similar keys such as "key0" .. "key99999" crowd into a few hundred buckets,
/// whatever the size, and each lookup then walks a long chain. These mix every byte of the
/// text (FNV-1a with a 64-bit avalanche) and spread such keys evenly over any size, so use
/// them for any table of more than a few dozen entries whose bucket numbers need not match
/// an older table's. The variant form hashes the same printed text as VX_defHashFuncVarKey,
/// so keys the table finds equal (the integer 65 and the text "65") still share a bucket. A
/// key without text, an unprintable kind or a size of 0 gives `size`, as the defaults do.
///@{
VX_API unsigned int VX_strongHashFuncStringKey(const VX_String& key, unsigned int size);
VX_API unsigned int VX_strongHashFuncVarKey(const VX_Var& key, unsigned int size);
///@}

/// Every class template a table of K and D brings, declared `extern` in headers
/// (VX_HASH_TEMPLATES(extern, K, D)) and defined once by the source that owns the pair
/// (VX_HASH_TEMPLATES(, K, D)).
#define VX_HASH_TEMPLATES(EXT, K, D)                                             \
  EXT template class VX_API_##EXT VX_HashEntry<K, D>;                            \
  EXT template class VX_API_##EXT VX_Container<VX_HashEntry<K, D>>;              \
  EXT template class VX_API_##EXT VX_OrdContainer<VX_HashEntry<K, D>>;           \
  EXT template class VX_API_##EXT VX_I_Iterator<VX_HashEntry<K, D>>;             \
  EXT template class VX_API_##EXT VX_IndContainer<VX_HashEntry<K, D>>;           \
  EXT template class VX_API_##EXT VX_LNode<VX_HashEntry<K, D>>;                  \
  EXT template class VX_API_##EXT VX_LList<VX_HashEntry<K, D>>;                  \
  EXT template class VX_API_##EXT VX_Container<VX_LList<VX_HashEntry<K, D>>>;    \
  EXT template class VX_API_##EXT VX_OrdContainer<VX_LList<VX_HashEntry<K, D>>>; \
  EXT template class VX_API_##EXT VX_I_Iterator<VX_LList<VX_HashEntry<K, D>>>;   \
  EXT template class VX_API_##EXT VX_IndContainer<VX_LList<VX_HashEntry<K, D>>>; \
  EXT template class VX_API_##EXT VX_Array<VX_LList<VX_HashEntry<K, D>>>;        \
  EXT template class VX_API_##EXT VX_HashTable<K, D>;

VX_HASH_TEMPLATES(extern, VX_Var, VX_Var)

#endif
