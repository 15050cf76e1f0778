// The hash table and the default hash functions.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vx_test_support.h"
#include "vx_test_var.h"
#include "vxcore.h"

using namespace vxtest;
typedef VX_HashTable<VX_Var, VX_Var> VarTable;

namespace {

std::vector<std::string> visited;  // keys in the order iterate saw them
int released = 0;
VarTable* walked = nullptr;
VX_RET_STATUS intoSameBucket, intoOtherBucket;

VX_RET_STATUS record(VX_Var& key, VX_Var&) { return visited.push_back(key.str() ? key.str() : "?"), VX_RET_TRUE; }
VX_RET_STATUS countRelease(VX_Var&, VX_Var&) { return ++released, VX_RET_TRUE; }
VX_RET_STATUS refuseRelease(VX_Var&, VX_Var&) { return ++released, VX_RET_ERR_USER; }
unsigned int outOfRange(const VX_Var&, unsigned int size) { return size; }
unsigned int byFirstChar(const VX_Var& key, unsigned int size) { return key.str()[0] % size; }

// During a walk: adds into the walked bucket and into another, and changes an entry of the walked bucket.
VX_RET_STATUS meddle(VX_Var& key, VX_Var&) {
  if (std::string(key.str()) != "a1") return VX_RET_TRUE;
  intoSameBucket = walked->addEntry(VX_Var("a2"), VX_Var(0));
  intoOtherBucket = walked->addEntry(VX_Var("b1"), VX_Var(0));
  walked->setEntryData(VX_Var("a0"), VX_Var(42));
  return VX_RET_TRUE;
}
VX_RET_STATUS stopAtA0(VX_Var& key, VX_Var& data) {
  return record(key, data), std::string(key.str()) == "a0" ? VX_RET_ERR_USER : VX_RET_TRUE;
}

bool reportedAt(const CaptureReporter& rep, unsigned line, const char* file = "vxcore/include/vx_hash_impl") {
  bool found = false;
  for (const Report& r : rep.reports) found |= r.file == file && r.line == line;
  return found;
}

}  // namespace

TEST(Hash, AddFindChangeAndDelete) {
  CaptureReporter rep;
  VarTable t(16, VX_defHashFuncVarKey, nullptr), many(8, VX_defHashFuncVarKey, nullptr), byDefault;
  VX_Var data(VX_VAR_INT), untouched(-5), key("mutable");
  // A second add keeps the first data; misses leave the output alone.
  EXPECT_EQ(statuses({t.addEntry(VX_Var("one"), VX_Var(1)), t.addEntry(VX_Var("two"), VX_Var(2)),
                      t.addEntry(VX_Var("one"), VX_Var(100)), t.getEntryData(VX_Var("three"), untouched),
                      t.setEntryData(VX_Var("two"), VX_Var("now text")), t.setEntryData(VX_Var("three"), VX_Var(3)),
                      t.getEntryData(VX_Var("one"), data), t.deleteEntry(VX_Var("one")), t.deleteEntry(VX_Var("one")),
                      t.hasEntry(VX_Var("one")), t.addEntry(key, VX_Var(7))}),
            (std::vector<int>{1, 1, 0, 0, 1, 0, 1, 1, 0, 0, 1}));
  EXPECT_TRUE(data.i() == 1 && untouched.i() == -5 && t.numEntries() == 2u);
  EXPECT_TRUE(t.getEntryData(VX_Var("two"), data) == VX_RET_TRUE && std::string(data.str()) == "now text");
  key = "other";  // the table holds a copy of the key
  EXPECT_TRUE(t.hasEntry(VX_Var("mutable")) == VX_RET_TRUE && byDefault.getSize() == 256u);
  auto guid = [](int k) { return VX_Var(("0F86BBF4-57F4-4d5e-8FC2-" + std::to_string(1000000 + k)).c_str()); };
  for (int k = 0; k < 2000; ++k) ASSERT_EQ(many.addEntry(guid(k), VX_Var(k)), VX_RET_TRUE);
  EXPECT_EQ(many.numEntries(), 2000u);
  for (int k = 0; k < 2000; k += 97) EXPECT_TRUE(many.getEntryData(guid(k), data) == VX_RET_TRUE && data.i() == k);
  EXPECT_TRUE(rep.reports.empty());
}

TEST(Hash, WithoutAHashFunctionEverythingSharesBucketZeroNewestFirst) {
  released = 0;
  {
    VarTable t(4, nullptr, countRelease);
    for (const char* k : {"a", "b", "c"}) EXPECT_EQ(t.addEntry(VX_Var(k), VX_Var(0)), VX_RET_TRUE);
    visited.clear();
    EXPECT_EQ(statuses({t.iterate(record), t.deleteEntry(VX_Var("b")), t.deleteEntry(VX_Var("x"))}),
              (std::vector<int>{VX_RET_TRUE, VX_RET_TRUE, VX_RET_FALSE}));
    EXPECT_EQ(released, 1);  // the release function sees every entry leaving
    t.iterate(record);
    EXPECT_EQ(visited, (std::vector<std::string>{"c", "b", "a", "c", "a"}));
  }
  EXPECT_EQ(released, 3);
  released = 0;
  {
    VarTable t(4, VX_defHashFuncVarKey, refuseRelease);
    for (int k = 0; k < 6; ++k) t.addEntry(VX_Var(k), VX_Var(k));
  }
  EXPECT_EQ(released, 6);  // a failing release does not end the final walk
}

TEST(Hash, OutOfRangeBucketsFailWithoutTouchingTheTable) {
  CaptureReporter rep;
  VarTable t(8, outOfRange, nullptr);
  EXPECT_EQ(t.addEntry(VX_Var("k"), VX_Var(1)), VX_RET_ERR_GEN);
  EXPECT_TRUE(rep.reports.size() == 2u && reportedAt(rep, 316) && reportedAt(rep, 464));
  EXPECT_EQ(statuses({t.hasEntry(VX_Var("k")), t.deleteEntry(VX_Var("k"))}), (std::vector<int>{0, VX_RET_ERR_GEN}));
  EXPECT_TRUE(rep.reports.back().line == 506u && t.numEntries() == 0u);
}

TEST(Hash, IterateLocksTheBucketItWalks) {
  CaptureReporter rep;
  VarTable t(64, byFirstChar, nullptr);
  VX_Var data(0);
  t.addEntry(VX_Var("a0"), VX_Var(0));
  t.addEntry(VX_Var("a1"), VX_Var(1));
  walked = &t;
  EXPECT_EQ(t.iterate(meddle), VX_RET_TRUE);
  EXPECT_EQ(statuses({intoSameBucket, intoOtherBucket, t.hasEntry(VX_Var("a2"))}),
            (std::vector<int>{VX_RET_ERR_ILOCK, VX_RET_TRUE, VX_RET_FALSE}));
  t.getEntryData(VX_Var("a0"), data);
  EXPECT_EQ(data.i(), 42);  // a lookup in the walked bucket still works
  // Each nested lookup reports the held lock, and the refused add once more where it stops.
  EXPECT_TRUE(rep.count(VX_RET_ERR_ILOCK) == 3 && reportedAt(rep, 472));
  visited.clear();
  t.addEntry(VX_Var("a3"), VX_Var(3));
  EXPECT_EQ(t.iterate(stopAtA0), VX_RET_ERR_USER);
  EXPECT_EQ(visited, (std::vector<std::string>{"a3", "a1", "a0"}));
  EXPECT_EQ(t.addEntry(VX_Var("a4"), VX_Var(4)), VX_RET_TRUE);  // the stopped walk let go of its lock
  EXPECT_TRUE(t.iterate(nullptr) == VX_RET_ERR_ARG && reportedAt(rep, 550));
}

TEST(Hash, DefaultHashFunctions) {
  CaptureReporter rep;
  // "65": h = 2 * '6' + '5' = 161; frac(161 * 0.618034f) * 256 = 128.9.
  // No text gives the size (rejected by the table); a size of 0 gives 0 (no division by zero).
  EXPECT_EQ((std::vector<unsigned>{VX_defHashFuncStringKey(VX_String("65"), 256), VX_defHashFuncStringKey(VX_String(""), 7),
                                   VX_defHashFuncStringKey(VX_String(), 256), VX_defHashFuncStringKey(VX_String("x"), 0)}),
            (std::vector<unsigned>{128, 0, 256, 0}));
  std::string longKey(300, 'z');  // h passes every integer width: the 64-bit truncation rules
  EXPECT_LT(VX_defHashFuncStringKey(VX_String(longKey.c_str()), 97), 97u);
  std::pair<VX_Var, const char*> rows[] = {{VX_Var(65), "65"}, {VX_Var("65"), "65"}, {VX_Var(65u), "65"},
                                           {VX_Var(static_cast<short>(65)), "65"}, {VX_Var(0xFFFFFFFFul), "-1"},
                                           {VX_Var(2.5), "2.500000"}};
  for (auto& r : rows) EXPECT_EQ(VX_defHashFuncVarKey(r.first, 1000), VX_defHashFuncStringKey(VX_String(r.second), 1000));
  EXPECT_EQ(VX_defHashFuncVarKey(VX_Var(1e300), 97), VX_defHashFuncVarKey(VX_Var(1e300), 97));
  // Arrays carry one float accumulator across elements: "1" gives h = 49, frac(49 g) * 100 = 28.4;
  // "2" continues from 49: h = 148, frac(148 g) * 100 = 46.9.
  VX_VarArr pair(2, VX_VAR_INT, 1, VX_VAR_INT, 2), single(1, VX_VAR_INT, 0), withWild(2, VX_VAR_INT, 1, VX_VAR_WILD);
  VX_VarArr longer(3, VX_VAR_STRING, "a long element text that overflows a float's mantissa", -1, VX_VAR_DOUBLE, 1.5,
                   VX_VAR_STRING, "tail", -1);
  single[0] = 65;
  EXPECT_EQ((std::vector<unsigned>{VX_defHashFuncVarArrKey(pair, 100), VX_defHashFuncVarArrKey(single, 256),
                                   VX_defHashFuncVarArrKey(VX_VarArr(), 100)}),
            (std::vector<unsigned>{74, 128, 0}));
  EXPECT_LT(VX_defHashFuncVarArrKey(longer, 31), 31u);
  EXPECT_TRUE(rep.reports.empty());
  EXPECT_EQ((std::vector<unsigned>{VX_defHashFuncVarKey(VX_Var(), 256), VX_defHashFuncVarKey(VX_Var(VX_VAR_STRING), 256),
                                   VX_defHashFuncVarArrKey(withWild, 100)}),
            (std::vector<unsigned>{256, 256, 100}));
  EXPECT_TRUE(rep.reports.size() == 2u && reportedAt(rep, 51, ".\\src\\vx_hash") && reportedAt(rep, 140, ".\\src\\vx_hash"));
}

TEST(Hash, AllocationFailuresLeaveTheTableConsistent) {
  CaptureReporter rep;
  failNextAlloc();
  VarTable broken(8, nullptr, nullptr), t(8, VX_defHashFuncVarKey, nullptr);
  EXPECT_TRUE(!broken.objIsEnabled() && rep.count(VX_RET_ERR_MEM) == 1 && reportedAt(rep, 208));
  EXPECT_EQ(statuses({broken.addEntry(VX_Var(1), VX_Var(1)), broken.hasEntry(VX_Var(1)), broken.iterate(record)}),
            std::vector<int>(3, VX_RET_ERR_OBJ));
  VX_Var key("key text"), data("data text");  // made before the switch is armed
  VX_String text("text");
  VX_HashTable<VX_String, VX_String> s(8, VX_defHashFuncStringKey, nullptr);
  auto addFails = [&](auto& table, const auto& k, const auto& d) {
    return forEachAllocFailure([&](long) {
      int before = rep.count(VX_RET_ERR_MEM);
      VX_RET_STATUS st = table.addEntry(k, d);
      EXPECT_TRUE(st == VX_RET_TRUE || st == VX_RET_ERR_MEM) << st;
      EXPECT_EQ(rep.count(VX_RET_ERR_MEM) - before, st == VX_RET_ERR_MEM) << "one report per failure";
      EXPECT_TRUE(table.numEntries() == (st == VX_RET_TRUE) && table.hasEntry(k) == (st == VX_RET_TRUE)) << st;
      table.deleteEntry(k);
    });
  };
  EXPECT_GT(addFails(t, key, data), 4);
  EXPECT_GE(addFails(s, text, text), 3);
  VX_HashEntry<VX_Var, VX_Var> a, b;
  a.enabled = 0;
  EXPECT_TRUE((a == b) == 0 && reportedAt(rep, 124));
}

namespace {
std::string seen;
VX_RET_STATUS readData(VX_String&, VX_String& data) {
  return seen = static_cast<const char*>(data) ? static_cast<const char*>(data) : "<null>", VX_RET_TRUE;
}
}  // namespace

// Reading or changing an entry's data copies it; a copy that fails leaves both the caller's
// object and the entry as they were, and says so.
TEST(Hash, FailedDataCopiesChangeNothing) {
  CaptureReporter rep;
  typedef VX_HashTable<VX_String, VX_String> StringTable;
  StringTable t(8, VX_defHashFuncStringKey, nullptr);
  const VX_String key("k"), value("v"), fresh("new");
  ASSERT_EQ(t.addEntry(key, value), VX_RET_TRUE);
  VX_String out("old");
  auto text = [](const VX_String& s) { return std::string(static_cast<const char*>(s) ? static_cast<const char*>(s) : "<null>"); };
  int tries = forEachAllocFailure([&](long) {
    VX_RET_STATUS st = t.getEntryData(key, out);
    EXPECT_EQ(text(out), st == VX_RET_TRUE ? "v" : "old");
    EXPECT_TRUE(st == VX_RET_TRUE || (st == VX_RET_ERR_MEM && reportedAt(rep, 399)));
    if (st == VX_RET_TRUE) out = "old";
  });
  EXPECT_GE(tries, 1);
  tries = forEachAllocFailure([&](long) {
    VX_RET_STATUS st = t.setEntryData(key, fresh);
    seen.clear();
    t.iterate(readData);  // copies nothing, so the armed failure stays where it is
    EXPECT_EQ(seen, st == VX_RET_TRUE ? "new" : "v");
    EXPECT_TRUE(st == VX_RET_TRUE || (st == VX_RET_ERR_MEM && reportedAt(rep, 419)));
    if (st == VX_RET_TRUE) t.setEntryData(key, value);
  });
  EXPECT_GE(tries, 1);
}

// The strong hashes spread keys that the default crowds together, stay within the size, and
// keep keys that compare equal in one bucket.
TEST(Hash, StrongHashesSpreadSimilarKeys) {
  const unsigned size = 100000;
  std::vector<unsigned> strong(size), byDefault(size);
  unsigned usedStrong = 0, usedDefault = 0, longest = 0;
  for (unsigned k = 0; k < size; ++k) {
    const VX_String key(("key" + std::to_string(k)).c_str());
    unsigned b = VX_strongHashFuncStringKey(key, size), d = VX_defHashFuncStringKey(key, size);
    ASSERT_LT(b, size);
    usedStrong += strong[b]++ == 0;
    usedDefault += byDefault[d]++ == 0;
    longest = std::max(longest, strong[b]);
  }
  EXPECT_EQ(usedDefault, 488u);     // the default's buckets are fixed, crowding included
  EXPECT_GT(usedStrong, 60000u);    // about 1 - 1/e of the buckets, as for random keys
  EXPECT_LE(longest, 12u);
  CaptureReporter rep;
  std::pair<VX_Var, const char*> alike[] = {{VX_Var(65), "65"}, {VX_Var(65u), "65"},
                                            {VX_Var(static_cast<short>(65)), "65"}, {VX_Var(2.5), "2.500000"}};
  for (auto& r : alike)
    EXPECT_EQ(VX_strongHashFuncVarKey(r.first, 1000), VX_strongHashFuncStringKey(VX_String(r.second), 1000));
  EXPECT_EQ(VX_strongHashFuncStringKey(VX_String("65"), 1000), VX_strongHashFuncStringKey(VX_String("65"), 1000));
  EXPECT_NE(VX_strongHashFuncStringKey(VX_String("key10"), 1u << 20), VX_strongHashFuncStringKey(VX_String("key01"), 1u << 20));
  for (const Report& r : rep.reports) ADD_FAILURE() << r.file << ":" << r.line << " " << r.text;
  EXPECT_EQ((std::vector<unsigned>{VX_strongHashFuncStringKey(VX_String(), 64), VX_strongHashFuncStringKey(VX_String("x"), 0),
                                   VX_strongHashFuncStringKey(VX_String(""), 1), VX_strongHashFuncVarKey(VX_Var(), 64)}),
            (std::vector<unsigned>{64, 0, 0, 64}));
  VarTable t(1024, VX_strongHashFuncVarKey, nullptr);
  for (int k = 0; k < 3000; ++k) ASSERT_EQ(t.addEntry(VX_Var(k), VX_Var(k)), VX_RET_TRUE);
  VX_Var data(0);
  EXPECT_TRUE(t.getEntryData(VX_Var(65), data) == VX_RET_TRUE && data.i() == 65);
  EXPECT_EQ(t.addEntry(VX_Var(2999), VX_Var(0)), VX_RET_FALSE);
}
