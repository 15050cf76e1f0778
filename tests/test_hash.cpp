// The hash table and the default hash functions.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vx_test_support.h"
#include "vxcore.h"

using vxtest::CaptureReporter;
typedef VX_HashTable<VX_Var, VX_Var> VarTable;

namespace {

std::vector<std::string> visited;  // keys in the order iterate saw them
int released = 0;

VX_RET_STATUS record(VX_Var& key, VX_Var&) {
  visited.push_back(key.str() ? key.str() : "?");
  return VX_RET_TRUE;
}

VX_RET_STATUS countRelease(VX_Var&, VX_Var&) {
  ++released;
  return VX_RET_TRUE;
}

unsigned int outOfRange(const VX_Var&, unsigned int size) { return size; }
unsigned int byFirstChar(const VX_Var& key, unsigned int size) { return key.str()[0] % size; }

}  // namespace

TEST(Hash, AddFindChangeAndDelete) {
  CaptureReporter rep;
  VarTable t(16, VX_defHashFuncVarKey, nullptr);
  ASSERT_TRUE(t.objIsEnabled());
  EXPECT_EQ(t.getSize(), 16u);
  EXPECT_EQ(t.addEntry(VX_Var("one"), VX_Var(1)), VX_RET_TRUE);
  EXPECT_EQ(t.addEntry(VX_Var("two"), VX_Var(2)), VX_RET_TRUE);
  EXPECT_EQ(t.addEntry(VX_Var("one"), VX_Var(100)), VX_RET_FALSE);  // the first data stays
  EXPECT_EQ(t.numEntries(), 2u);

  VX_Var data(VX_VAR_INT);
  EXPECT_EQ(t.getEntryData(VX_Var("one"), data), VX_RET_TRUE);
  EXPECT_EQ(data.i(), 1);
  EXPECT_EQ(t.hasEntry(VX_Var("three")), VX_RET_FALSE);
  VX_Var untouched(-5);
  EXPECT_EQ(t.getEntryData(VX_Var("three"), untouched), VX_RET_FALSE);
  EXPECT_EQ(untouched.i(), -5);

  EXPECT_EQ(t.setEntryData(VX_Var("two"), VX_Var("now text")), VX_RET_TRUE);
  EXPECT_EQ(t.getEntryData(VX_Var("two"), data), VX_RET_TRUE);
  EXPECT_STREQ(data.str(), "now text");
  EXPECT_EQ(t.setEntryData(VX_Var("three"), VX_Var(3)), VX_RET_FALSE);

  EXPECT_EQ(t.deleteEntry(VX_Var("one")), VX_RET_TRUE);
  EXPECT_EQ(t.deleteEntry(VX_Var("one")), VX_RET_FALSE);
  EXPECT_EQ(t.hasEntry(VX_Var("one")), VX_RET_FALSE);
  EXPECT_EQ(t.hasEntry(VX_Var("two")), VX_RET_TRUE);
  EXPECT_EQ(t.numEntries(), 1u);
  EXPECT_TRUE(rep.reports.empty());

  // Keys are copies: changing the caller's key afterwards changes nothing in the table.
  VX_Var key("mutable");
  t.addEntry(key, VX_Var(7));
  key = "other";
  EXPECT_EQ(t.hasEntry(VX_Var("mutable")), VX_RET_TRUE);
}

TEST(Hash, WithoutAHashFunctionEverythingSharesBucketZeroNewestFirst) {
  VarTable t(4, nullptr, nullptr);
  for (const char* k : {"a", "b", "c"}) EXPECT_EQ(t.addEntry(VX_Var(k), VX_Var(0)), VX_RET_TRUE);
  visited.clear();
  EXPECT_EQ(t.iterate(record), VX_RET_TRUE);
  EXPECT_EQ(visited, (std::vector<std::string>{"c", "b", "a"}));
  EXPECT_EQ(t.deleteEntry(VX_Var("b")), VX_RET_TRUE);
  visited.clear();
  t.iterate(record);
  EXPECT_EQ(visited, (std::vector<std::string>{"c", "a"}));

  VarTable byDefault;
  EXPECT_EQ(byDefault.getSize(), 256u);
  EXPECT_EQ(byDefault.addEntry(VX_Var(1), VX_Var(2)), VX_RET_TRUE);
}

TEST(Hash, OutOfRangeBucketsFailWithoutTouchingTheTable) {
  CaptureReporter rep;
  VarTable t(8, outOfRange, nullptr);
  EXPECT_EQ(t.addEntry(VX_Var("k"), VX_Var(1)), VX_RET_ERR_GEN);
  std::vector<unsigned> lines;
  for (const vxtest::Report& r : rep.reports) lines.push_back(r.line);
  EXPECT_EQ(lines, (std::vector<unsigned>{316, 464}));
  EXPECT_EQ(rep.reports[0].file, "vxcore/include/vx_hash_impl");
  EXPECT_EQ(t.hasEntry(VX_Var("k")), VX_RET_FALSE);
  EXPECT_EQ(t.deleteEntry(VX_Var("k")), VX_RET_ERR_GEN);
  EXPECT_EQ(rep.reports.back().line, 506u);
  EXPECT_EQ(t.numEntries(), 0u);
}

TEST(Hash, ReleaseFunctionSeesEveryEntryLeaving) {
  released = 0;
  {
    VarTable t(8, VX_defHashFuncVarKey, countRelease);
    for (int k = 0; k < 3; ++k) t.addEntry(VX_Var(k), VX_Var(k));
    EXPECT_EQ(t.deleteEntry(VX_Var(1)), VX_RET_TRUE);
    EXPECT_EQ(released, 1);
    EXPECT_EQ(t.deleteEntry(VX_Var(7)), VX_RET_FALSE);
    EXPECT_EQ(released, 1);
    t.addEntry(VX_Var(9), VX_Var(9));
  }
  EXPECT_EQ(released, 4);  // three left at destruction
}

namespace {

VarTable* walked = nullptr;
VX_RET_STATUS intoSameBucket;
VX_RET_STATUS intoOtherBucket;

VX_RET_STATUS meddle(VX_Var& key, VX_Var&) {
  if (std::string(key.str()) != "a1") return VX_RET_TRUE;
  intoSameBucket = walked->addEntry(VX_Var("a2"), VX_Var(0));
  intoOtherBucket = walked->addEntry(VX_Var("b1"), VX_Var(0));
  walked->setEntryData(VX_Var("a0"), VX_Var(42));  // a lookup in the walked bucket still works
  return VX_RET_TRUE;
}

VX_RET_STATUS stopAtA0(VX_Var& key, VX_Var&) {
  visited.push_back(key.str());
  return std::string(key.str()) == "a0" ? VX_RET_ERR_USER : VX_RET_TRUE;
}

}  // namespace

TEST(Hash, IterateLocksTheBucketItWalks) {
  CaptureReporter rep;
  VarTable t(64, byFirstChar, nullptr);
  t.addEntry(VX_Var("a0"), VX_Var(0));
  t.addEntry(VX_Var("a1"), VX_Var(1));
  walked = &t;
  EXPECT_EQ(t.iterate(meddle), VX_RET_TRUE);
  EXPECT_EQ(intoSameBucket, VX_RET_ERR_ILOCK);
  EXPECT_EQ(intoOtherBucket, VX_RET_TRUE);
  EXPECT_EQ(t.hasEntry(VX_Var("a2")), VX_RET_FALSE);
  VX_Var data(0);
  t.getEntryData(VX_Var("a0"), data);
  EXPECT_EQ(data.i(), 42);
  // The held lock is reported by each nested lookup (the add's own and setEntryData's) and
  // the refused add once more where it stops.
  EXPECT_EQ(rep.count(VX_RET_ERR_ILOCK), 3);
  bool refusedAt472 = false;
  for (const vxtest::Report& r : rep.reports) refusedAt472 |= r.line == 472 && r.file == "vxcore/include/vx_hash_impl";
  EXPECT_TRUE(refusedAt472);

  visited.clear();
  t.addEntry(VX_Var("a3"), VX_Var(3));
  EXPECT_EQ(t.iterate(stopAtA0), VX_RET_ERR_USER);
  EXPECT_EQ(visited, (std::vector<std::string>{"a3", "a1", "a0"}));
  EXPECT_EQ(t.addEntry(VX_Var("a4"), VX_Var(4)), VX_RET_TRUE);  // the stopped walk let go of its lock

  rep.clear();
  EXPECT_EQ(t.iterate(nullptr), VX_RET_ERR_ARG);
  EXPECT_EQ(rep.reports[0].line, 550u);
}

TEST(Hash, DefaultStringAndVariantHashes) {
  CaptureReporter rep;
  EXPECT_EQ(VX_defHashFuncStringKey(VX_String(""), 256), 0u);
  EXPECT_EQ(VX_defHashFuncStringKey(VX_String(""), 7), 0u);
  EXPECT_EQ(VX_defHashFuncStringKey(VX_String(), 256), 256u);  // no text: rejected by the table
  // "65": h = 2 * '6' + '5' = 161; frac(161 * 0.618034f) * 256 = 128.9.
  EXPECT_EQ(VX_defHashFuncStringKey(VX_String("65"), 256), 128u);
  EXPECT_EQ(VX_defHashFuncVarKey(VX_Var(65), 256), 128u);
  EXPECT_EQ(VX_defHashFuncVarKey(VX_Var("65"), 256), 128u);
  EXPECT_EQ(VX_defHashFuncVarKey(VX_Var(65u), 256), 128u);
  EXPECT_EQ(VX_defHashFuncVarKey(VX_Var(static_cast<short>(65)), 256), 128u);
  EXPECT_EQ(VX_defHashFuncVarKey(VX_Var(0xFFFFFFFFul), 1000), VX_defHashFuncStringKey(VX_String("-1"), 1000));
  EXPECT_EQ(VX_defHashFuncVarKey(VX_Var(2.5), 1000), VX_defHashFuncStringKey(VX_String("2.500000"), 1000));
  std::string longKey(300, 'z');  // h passes every integer width: the 64-bit truncation rules
  EXPECT_LT(VX_defHashFuncStringKey(VX_String(longKey.c_str()), 97), 97u);
  EXPECT_EQ(VX_defHashFuncVarKey(VX_Var(1e300), 97), VX_defHashFuncVarKey(VX_Var(1e300), 97));
  EXPECT_TRUE(rep.reports.empty());

  EXPECT_EQ(VX_defHashFuncVarKey(VX_Var(), 256), 256u);
  ASSERT_EQ(rep.reports.size(), 1u);
  EXPECT_EQ(rep.reports[0].file, ".\\src\\vx_hash");
  EXPECT_EQ(rep.reports[0].line, 51u);
  EXPECT_EQ(VX_defHashFuncVarKey(VX_Var(VX_VAR_STRING), 256), 256u);
  EXPECT_EQ(VX_defHashFuncStringKey(VX_String("x"), 0), 0u);  // no division by zero
}

TEST(Hash, DefaultVariantArrayHashCarriesItsAccumulator) {
  CaptureReporter rep;
  EXPECT_EQ(VX_defHashFuncVarArrKey(VX_VarArr(), 100), 0u);
  // "1": h = 49, frac(49 g) * 100 = 28.4; "2" continues from 49: h = 148, frac(148 g) * 100 = 46.9.
  VX_VarArr pair(2, VX_VAR_INT, 1, VX_VAR_INT, 2);
  EXPECT_EQ(VX_defHashFuncVarArrKey(pair, 100), 74u);
  VX_VarArr single(1, VX_VAR_INT, 0);
  single[0] = 65;
  EXPECT_EQ(VX_defHashFuncVarArrKey(single, 256), VX_defHashFuncVarKey(VX_Var(65), 256));
  VX_VarArr longer(3, VX_VAR_STRING, "a long element text that overflows a float's mantissa", -1, VX_VAR_DOUBLE, 1.5,
                   VX_VAR_STRING, "tail", -1);
  EXPECT_LT(VX_defHashFuncVarArrKey(longer, 31), 31u);
  EXPECT_TRUE(rep.reports.empty());

  VX_VarArr withWild(2, VX_VAR_INT, 1, VX_VAR_WILD);
  EXPECT_EQ(VX_defHashFuncVarArrKey(withWild, 100), 100u);
  EXPECT_EQ(rep.reports.back().line, 140u);
}

TEST(Hash, ManyTextKeysInAFixedTable) {
  VarTable t(1024, VX_defHashFuncVarKey, nullptr);
  char key[64];
  for (int k = 0; k < 2000; ++k) {
    std::snprintf(key, sizeof key, "0F86BBF4-57F4-4d5e-8FC2-%012d", k);
    ASSERT_EQ(t.addEntry(VX_Var(key), VX_Var(k)), VX_RET_TRUE);
  }
  EXPECT_EQ(t.numEntries(), 2000u);
  VX_Var data(0);
  for (int k = 0; k < 2000; k += 97) {
    std::snprintf(key, sizeof key, "0F86BBF4-57F4-4d5e-8FC2-%012d", k);
    ASSERT_EQ(t.getEntryData(VX_Var(key), data), VX_RET_TRUE);
    EXPECT_EQ(data.i(), k);
  }
}

TEST(Hash, AllocationFailuresLeaveTheTableConsistent) {
  CaptureReporter rep;
  vxtest::failNextAlloc();
  VarTable broken(8, nullptr, nullptr);
  EXPECT_FALSE(broken.objIsEnabled());
  EXPECT_EQ(rep.count(VX_RET_ERR_MEM), 1);
  EXPECT_EQ(rep.reports.back().line, 208u);
  EXPECT_EQ(broken.addEntry(VX_Var(1), VX_Var(1)), VX_RET_ERR_OBJ);
  EXPECT_EQ(broken.hasEntry(VX_Var(1)), VX_RET_ERR_OBJ);
  EXPECT_EQ(broken.iterate(record), VX_RET_ERR_OBJ);

  VarTable t(8, VX_defHashFuncVarKey, nullptr);
  VX_Var key("key text"), data("data text");  // made before the switch is armed
  int failures = vxtest::forEachAllocFailure([&](long) {
    VX_RET_STATUS st = t.addEntry(key, data);
    if (st <= 2) {
      EXPECT_EQ(t.hasEntry(key), VX_RET_TRUE);
      EXPECT_EQ(t.numEntries(), 1u);
      t.deleteEntry(key);
    } else {
      EXPECT_EQ(st, VX_RET_ERR_MEM);
      EXPECT_EQ(t.numEntries(), 0u);
      EXPECT_EQ(t.hasEntry(key), VX_RET_FALSE);
    }
  });
  EXPECT_GT(failures, 4);

  VX_HashEntry<VX_Var, VX_Var> a, b;
  a.enabled = 0;
  rep.clear();
  EXPECT_EQ(a == b, 0);
  EXPECT_EQ(rep.reports[0].line, 124u);
}
