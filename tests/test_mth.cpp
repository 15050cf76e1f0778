#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "vx_file_test_support.h"
#include "vx_test_support.h"

namespace {

using S = std::vector<int>;
using F = std::vector<float>;

F entries(const VX_Matrix& m) {
  F out;
  for (unsigned r = 0; r < m.getNumRows(); ++r)
    for (unsigned c = 0; c < m.getNumCols(); ++c) out.push_back(m[r][c]);
  return out;
}

// Determinant by partial-pivot elimination in double, the reference for the expansion.
double referenceDet(unsigned n, const F& a) {
  std::vector<double> m(a.begin(), a.end());
  double det = 1.0;
  for (unsigned i = 0; i < n; ++i) {
    unsigned p = i;
    for (unsigned k = i + 1; k < n; ++k)
      if (std::fabs(m[k * n + i]) > std::fabs(m[p * n + i])) p = k;
    if (m[p * n + i] == 0.0) return 0.0;
    if (p != i) {
      for (unsigned c = 0; c < n; ++c) std::swap(m[i * n + c], m[p * n + c]);
      det = -det;
    }
    det *= m[i * n + i];
    for (unsigned k = i + 1; k < n; ++k) {
      double f = m[k * n + i] / m[i * n + i];
      for (unsigned c = i; c < n; ++c) m[k * n + c] -= f * m[i * n + c];
    }
  }
  return det;
}

// A random n × n matrix with entries in [-4, 4] and a dominant diagonal (well conditioned).
F randomMatrix(std::mt19937& rng, unsigned n) {
  std::uniform_real_distribution<float> d(-4.0f, 4.0f);
  F a(n * n);
  for (float& v : a) v = d(rng);
  for (unsigned i = 0; i < n; ++i) a[i * n + i] += (a[i * n + i] < 0 ? -1.0f : 1.0f) * 4.0f * n;
  return a;
}

}  // namespace

TEST(Vector, ArithmeticFollowsTheRightHandAndRefusesTinyDivisors) {
  vxtest::CaptureReporter rep;
  VX_Vector x(1, 0, 0), y(0, 1, 0), z(0, 0, 1), v(3, -4, 12);
  EXPECT_EQ((S{(x & y) == z, VX_crossProduct(y, z) == x, (z & x) == y}), (S{1, 1, 1}));
  EXPECT_EQ((F{v * v, v.vlength(), VX_vectorMagnitude(v), (v / 2.0f).x, (2.0f * v).z}), (F{169, 13, 13, 1.5f, 24}));

  VX_Vector w(v);
  EXPECT_EQ((S{(w /= 0.0009f) == v, (v / -0.0005f) == v, (w /= 0.5f) == VX_Vector(6, -8, 24)}), (S{1, 1, 1}));
  ASSERT_EQ(rep.reports.size(), 2u);
  EXPECT_EQ((S{rep.reports[0].func == "VX_Vector: divide method", rep.reports[0].text == "Division by zero",
               rep.reports[0].file == ".\\src\\vx_mth"}),
            (S{1, 1, 1}));

  VX_Vector tiny(0.0005f, 0, 0.0005f), n(v);
  EXPECT_TRUE(tiny.normalize() == VX_Vector());
  EXPECT_NEAR(VX_vectorNormalize(n).vlength(), 1.0f, 1e-6f);
  // Exact equality, but parallel within the tolerance per component, either way round.
  EXPECT_EQ((S{VX_Vector(1, 2, 3) == VX_Vector(1, 2, 3.0001f), VX_vectorsParallel(v, v * 7.0f),
               VX_vectorsParallel(v, v * -0.5f), VX_vectorsParallel(x, VX_Vector(1, 0.01f, 0)),
               VX_vectorsParallel(x, VX_Vector(1, 0.0005f, 0)), VX_vectorsParallel(x, VX_Vector()),
               VX_vectorsParallel(VX_Vector(), VX_Vector())}),
            (S{0, 1, 1, 0, 1, 0, 1}));
  EXPECT_EQ((S{VX_isPowerOf2(0), VX_isPowerOf2(1), VX_isPowerOf2(2), VX_isPowerOf2(6)}), (S{1, 0, 1, 0}));
}

TEST(VectorArr, ElementWiseOperationsNeedEqualLengths) {
  vxtest::CaptureReporter rep;
  VX_VectorArr a(2, 1.0f, 2.0, 3.0, 4.0, 5.0, 6.0), b(2), c(3);
  b(0, 1, 1, 1);
  VX_Vector v(10, 20, 30);
  EXPECT_EQ((S{b(1, &v), b(2, &v), b(0, static_cast<VX_Vector*>(nullptr))}),
            (S{VX_RET_TRUE, VX_RET_ERR_ARG, VX_RET_ERR_ARG}));
  VX_VectorArr sum = a + b, diff = a - b;
  a += b;
  a -= b;
  a -= b;
  EXPECT_EQ((S{sum[1] == VX_Vector(14, 25, 36), diff[0] == VX_Vector(0, 1, 2), a[1] == VX_Vector(-6, -15, -24)}),
            (S{1, 1, 1}));
  rep.clear();

  VX_VectorArr bad = a + c;
  a += c;
  EXPECT_EQ((S{bad.objIsEnabled(), int(a.getNum()), a[1] == VX_Vector(-6, -15, -24)}), (S{0, 2, 1}));
  ASSERT_EQ(rep.reports.size(), 2u);
  EXPECT_EQ((S{rep.reports[0].func == "VX_VectorArr add", rep.reports[1].func == "VX_VectorArr assign sum",
               rep.reports[0].text == "Array args have different number of vertices"}),
            (S{1, 1, 1}));
  rep.clear();
  EXPECT_EQ(&a[2], reinterpret_cast<VX_Vector*>(&VX_NULL_PTR));
  EXPECT_EQ(rep.reports.at(0).text, "Index 2 not in [0,1]");

  VX_VectorArr copy(a);
  c = a;
  EXPECT_EQ((S{int(c.getNum()), c[1] == a[1], copy[0] == a[0], c.vecArrPtr() != a.vecArrPtr()}), (S{2, 1, 1, 1}));

  int failures = vxtest::forEachAllocFailure([&](long) {
    VX_VectorArr made(2, a.vecArrPtr());
    VX_VectorArr target(1);
    target = a;
    VX_VectorArr joined = a + c;
    if (!made.objIsEnabled()) {
      EXPECT_EQ(made.vecArrPtr(), nullptr);
    }
    EXPECT_TRUE(target.getNum() == 2 || target.getNum() == 1 || !target.objIsEnabled());
  });
  EXPECT_EQ(failures, 4);
}

TEST(MatrixFunctions, ProductSnapsNegligibleSumsAndRefusesMismatches) {
  vxtest::CaptureReporter rep;
  const float a[4] = {1, 0.0004f, 0, 1};
  float id[4], out[4];
  VX_matrixSetIdentity(2, 2, id);
  float wide[6];
  VX_matrixSetIdentity(2, 3, wide);
  EXPECT_EQ((S{VX_matrixMult(out, 2, 2, a, 2, 2, id), VX_matrixMult(out, 2, 3, wide, 2, 3, wide)}),
            (S{VX_RET_TRUE, VX_RET_ERR_ARG}));
  EXPECT_EQ(F(out, out + 4), (F{1, 0, 0, 1}));  // the refused product left it alone
  EXPECT_EQ(F(wide, wide + 6), (F{1, 0, 0, 0, 1, 0}));
  ASSERT_EQ(rep.reports.size(), 1u);
  EXPECT_EQ(rep.reports[0].text, "incompatible matrices: 2 x 3 and 2 x 3");

  // Results may overwrite their inputs.
  float m[6] = {1, 2, 3, 4, 5, 6}, sq[4] = {1, 2, 3, 4};
  EXPECT_EQ((S{VX_matrixTrans(2, 3, m, m), VX_matrixMult(sq, 2, 2, sq, 2, 2, sq)}), (S{VX_RET_TRUE, VX_RET_TRUE}));
  EXPECT_EQ(F(m, m + 6), (F{1, 4, 2, 5, 3, 6}));
  EXPECT_EQ(F(sq, sq + 4), (F{7, 10, 15, 22}));
  EXPECT_EQ((S{VX_matrixCopy(2, 2, nullptr, out), VX_matrixTrans(2, 2, a, nullptr), VX_matrixSetIdentity(1, 1, nullptr)}),
            (S{VX_RET_ERR_ARG, VX_RET_ERR_ARG, VX_RET_ERR_ARG}));
}

TEST(MatrixFunctions, DeterminantsMatchEliminationInDouble) {
  std::mt19937 rng(11);
  std::uniform_real_distribution<float> d(-3.0f, 3.0f);
  for (unsigned n = 1; n <= 6; ++n)
    for (int trial = 0; trial < 20; ++trial) {
      F a(n * n);
      for (float& v : a) v = d(rng);
      double want = referenceDet(n, a);
      EXPECT_NEAR(VX_matrixDet(n, n, a.data()), want, 1e-3 * std::max(1.0, std::fabs(want))) << n;
    }
  const float zeroColumn[9] = {0, 1, 2, 0, 3, 4, 0, 5, 6}, a23[6] = {1, 2, 3, 4, 5, 6};
  // A first column of zeros needs no minor at all: no allocation is reached either.
  vxtest::failNextAlloc();
  EXPECT_EQ(VX_matrixDet(3, 3, zeroColumn), 0.0f);
  vxtest::clearAllocFault();
  EXPECT_EQ((F{VX_matrixDet(2, 3, a23), VX_matrixDet(0, 0, a23)}), (F{0, 0}));
}

// Up to 6 × 6: without rescaling, the division-free products overflow from 6 × 6 on.
TEST(MatrixFunctions, InverseTimesMatrixIsTheIdentity) {
  vxtest::CaptureReporter rep;
  std::mt19937 rng(5);
  for (unsigned n = 1; n <= 6; ++n)
    for (int trial = 0; trial < 10; ++trial) {
      F a = randomMatrix(rng, n), inv(n * n), prod(n * n);
      ASSERT_EQ(VX_matrixInv(n, n, a.data(), inv.data()), VX_RET_TRUE);
      VX_matrixMult(prod.data(), n, n, a.data(), n, n, inv.data());
      // Entries of the inverse at or below the tolerance are stored as 0, so a product entry
      // may be off by up to the tolerance times its row of a.
      for (unsigned i = 0; i < n; ++i) {
        float rowSum = 0.0f;
        for (unsigned k = 0; k < n; ++k) rowSum += std::fabs(a[i * n + k]);
        for (unsigned j = 0; j < n; ++j)
          EXPECT_NEAR(prod[i * n + j], i == j ? 1.0f : 0.0f, 1e-3f * rowSum + 1e-4f) << n;
      }
    }
  // Zero pivots: swapped rows are repaired; a cyclic arrangement takes its pivot from below.
  float swap2[4] = {0, 1, 1, 0}, cyc[9] = {0, 1, 0, 0, 0, 1, 1, 0, 0}, inv[9];
  EXPECT_EQ((S{VX_matrixInv(2, 2, swap2, swap2), VX_matrixInv(3, 3, cyc, inv), int(rep.reports.size())}),
            (S{VX_RET_TRUE, VX_RET_TRUE, 0}));
  EXPECT_EQ(F(swap2, swap2 + 4), (F{0, 1, 1, 0}));
  EXPECT_EQ(F(inv, inv + 9), (F{0, 0, 1, 1, 0, 0, 0, 1, 0}));

  // Singular and non-square matrices are refused and the output is left alone.
  float sing[9] = {1, 2, 3, 2, 4, 6, 1, 0, 1}, keep[9] = {9, 9, 9, 9, 9, 9, 9, 9, 9};
  EXPECT_EQ((S{VX_matrixInv(3, 3, sing, keep), VX_matrixInv(2, 3, sing, keep), keep[0] == 9 && keep[8] == 9}),
            (S{VX_RET_ERR_ARG, VX_RET_ERR_ARG, 1}));
  ASSERT_EQ(rep.reports.size(), 2u);
  EXPECT_EQ((S{rep.reports[0].text == "Matrix not invertible", rep.reports[0].func == "VX_Matrix inverse: ",
               rep.reports[1].text == "Matrix not N x N"}),
            (S{1, 1, 1}));

  // Both working blocks (the minors' rows and the augmented matrix) can fail.
  F a = randomMatrix(rng, 4), out(16, 7.0f);
  int failures = vxtest::forEachAllocFailure([&](long) {
    VX_RET_STATUS st = VX_matrixInv(4, 4, a.data(), out.data());
    if (st > 2) {
      EXPECT_EQ((S{st, out[0] == 7.0f}), (S{VX_RET_ERR_MEM, 1}));
    }
  });
  EXPECT_EQ(failures, 2);
}

TEST(Matrix, MembersReportBadRowsShapesAndDisabledObjects) {
  vxtest::CaptureReporter rep;
  VX_Matrix m(2, 2, 1.0f, 2.0, 3.0, 4.0), t(2, 3, 1.0f, 2.0, 3.0, 4.0, 5.0, 6.0);
  EXPECT_EQ((S{int(m.getNumRows()), int(m.getNumCols()), m.IsInvertible(), m.determinant() == -2.0f, m[2] == nullptr}),
            (S{2, 2, 1, 1, 1}));
  EXPECT_EQ((S{rep.reports.size() == 1, rep.mentions("Index 2 not in [0,1]"), rep.mentions("VX_Matrix row reference")}),
            (S{1, 1, 1}));
  rep.clear();
  EXPECT_EQ((S{t.determinant() == 0.0f, t.IsInvertible(), rep.mentions("Matrix not N x N")}), (S{1, 0, 1}));
  // |det| must be strictly above the tolerance.
  EXPECT_EQ((S{VX_Matrix(2, 2, 0.001f, 0.0, 0.0, 1.0).IsInvertible(), VX_Matrix(2, 2, 0.0011f, 0.0, 0.0, 1.0).IsInvertible()}),
            (S{0, 1}));

  VX_Matrix p = m * t;
  EXPECT_EQ(entries(p), (F{9, 12, 15, 19, 26, 33}));
  rep.clear();
  VX_Matrix q = t * m;
  t *= m;
  EXPECT_EQ((S{q.objIsEnabled(), int(t.getNumRows()), int(t.getNumCols()), rep.count(VX_RET_ERR_POBJ)}),
            (S{0, 2, 3, 0}));
  EXPECT_TRUE(rep.mentions("incompatible matrices: 2 x 3 and 2 x 2"));
  EXPECT_EQ((S{t.transpose(), int(t.getNumRows()), int(t.getNumCols()), (m = t) == t, (m = m) == t}),
            (S{VX_RET_TRUE, 3, 2, 1, 1}));
  EXPECT_EQ(entries(t), (F{1, 4, 2, 5, 3, 6}));

  // Dimensions beyond a packed block's reach leave the matrix disabled; so does no memory.
  rep.clear();
  VX_Matrix huge(0x10000, 0x10000);
  EXPECT_EQ((S{huge.objIsEnabled(), int(huge.getNumRows()), huge.IsInvertible(), huge[0] == nullptr,
               huge.transpose()}),
            (S{0, 0, VX_RET_ERR_POBJ, 1, VX_RET_ERR_POBJ}));
  VX_Matrix hugeCopy(huge);
  EXPECT_EQ((S{rep.mentions("Matrix is 65536 x 65536"), hugeCopy.objIsEnabled()}), (S{1, 0}));

  const float values[4] = {5, 6, 7, 8};
  int failures = vxtest::forEachAllocFailure([&](long) {
    VX_Matrix made(values, 2, 2);
    if (!made.objIsEnabled()) return;
    VX_Matrix target(3, 3);
    if (!target.objIsEnabled()) return;
    target = made;  // a new size needs a new block
    EXPECT_TRUE(target == made || (target.getNumRows() == 3 && entries(target) == F(9, 0.0f)));
    VX_Matrix prod = made * made;
    if (prod.objIsEnabled()) {
      EXPECT_EQ(entries(prod), (F{67, 78, 91, 106}));
    }
    VX_Matrix tr(made);
    if (tr.objIsEnabled() && tr.transpose() > 2) {
      EXPECT_EQ(entries(tr), entries(made));
    }
  });
  EXPECT_EQ(failures, 7);
}

TEST(Matrix, PacksRowsColumnsAndEntriesAndRefusesHostileBlocks) {
  vxtest::CaptureReporter rep;
  VX_Matrix m(2, 3, 1.0f, -2.0, 3.5, 0.0, 1e-3, 6.0);
  VX_Version v;
  char* block = nullptr;
  unsigned size = 0, used = 0;
  EXPECT_EQ((S{int(m.getPackedSize(v, VX_STORAGE_BINARY)), int(m.getPackedSize(v, VX_STORAGE_ASCII)),
               m.pack(v, &block, &size, VX_STORAGE_BINARY), int(size)}),
            (S{32, 0, VX_RET_TRUE, 32}));
  EXPECT_EQ(std::string(block, 12), std::string("\x02\0\0\0\x03\0\0\0\0\0\x80\x3f", 12));
  VX_Matrix back;
  EXPECT_EQ((S{back.unpackFrom(v, block, size, used, VX_STORAGE_BINARY), int(used), back == m}),
            (S{VX_RET_TRUE, 32, 1}));
  EXPECT_EQ((S{m.pack(v, block, size, VX_STORAGE_ASCII), back.unpack(v, nullptr, used, VX_STORAGE_BINARY)}),
            (S{VX_RET_ERR_ARG, VX_RET_ERR_ARG}));
  std::free(block);
  rep.clear();

  // Hostile blocks: the claim is checked against the bytes there before anything is allocated.
  struct Case { uint32_t rows, columns; unsigned avail; } cases[] = {
      {0x10000, 0x10000, 64},      // rows × columns wraps in 32 bits
      {0xFFFFFFFF, 0xFFFFFFFF, 64},  // and in its byte count
      {3, 3, 8 + 4 * 9 - 1},         // one byte short
      {1, 0x40000000, 64},           // 4 GiB of floats claimed by 64 bytes
      {2, 2, 7},                     // not even the dimensions
  };
  for (const Case& c : cases) {
    char hostile[64] = {};
    VX_putLE(hostile, c.rows);
    VX_putLE(hostile + 4, c.columns);
    VX_Matrix target(1, 1, 42.0f);
    vxtest::failNextAlloc();
    EXPECT_EQ((S{target.unpackFrom(v, hostile, c.avail, used, VX_STORAGE_BINARY), int(used),
                 vxtest::allocFaultPending(), int(target.getNumRows()), target[0][0] == 42.0f}),
              (S{VX_RET_ERR_ARG, 0, 1, 1, 1}))
        << c.rows << " x " << c.columns;
    vxtest::clearAllocFault();
  }
  EXPECT_EQ(rep.reports.size(), 5u);
  EXPECT_TRUE(rep.mentions("Matrix is 65536 x 65536"));

  // A matrix that cannot get its new block keeps the old one.
  char ok[8 + 16];
  VX_putLE(ok, uint32_t(2));
  VX_putLE(ok + 4, uint32_t(2));
  for (int k = 0; k < 4; ++k) VX_putLE(ok + 8 + 4 * k, float(k));
  VX_Matrix target(1, 1, 42.0f);
  vxtest::failNextAlloc();
  EXPECT_EQ((S{target.unpackFrom(v, ok, sizeof ok, used, VX_STORAGE_BINARY), int(target.getNumRows())}),
            (S{VX_RET_ERR_MEM, 1}));
  EXPECT_EQ(target.unpackFrom(v, ok, sizeof ok, used, VX_STORAGE_BINARY), VX_RET_TRUE);
  EXPECT_EQ(entries(target), (F{0, 1, 2, 3}));
}

TEST(Matrix, FileFormRoundTripsAndTextFormGoesRowByRow) {
  vxtest::CaptureReporter rep;
  vxtest::TempDir dir;
  std::string path = dir.file("m.bin");
  VX_Version v;
  VX_Matrix m(3, 2, 1.0f, 2.0, 3.0, 4.0, 5.0, 6.0), back;
  unsigned size = 0;
  {
    VX_FileBinary f(path.c_str(), VX_FILE_CREATE);
    EXPECT_EQ((S{m.persist(v, f, size), int(size)}), (S{VX_RET_TRUE, 32}));
    // A second record that claims far more entries than the file holds.
    unsigned n = 0;
    f.persistVal(0x1000u, n);
    f.persistVal(0x1000u, n);
    f.persistVal(1.0f, n);
    f.close();
  }
  VX_FileBinary f(path.c_str(), VX_FILE_READ);
  EXPECT_EQ((S{back.restore(v, f, size), int(size), back == m}), (S{VX_RET_TRUE, 32, 1}));
  EXPECT_EQ((S{back.restore(v, f, size), back == m, rep.mentions("Matrix is 4096 x 4096")}), (S{VX_RET_ERR_FILE, 1, 1}));
  f.close();
  // The text form: row by row.
  static std::string out;
  out.clear();
  VX_OStream stream;
  stream.setConsoleHandler([](char* text) {
    out += text;
    return VX_RET_TRUE;
  });
  stream << VX_Matrix(2, 2, 1.0f, 2.0, 3.0, 4.5);
  EXPECT_EQ(out, "1.000000 2.000000\n3.000000 4.500000\n");
}

TEST(Matrix3D, TransformsRowVectorsWithTranslationInRowThree) {
  vxtest::CaptureReporter rep;
  VX_3DMatrix t, inv;
  EXPECT_EQ(t.setTranslation(VX_Vector(1, 2, 3)), VX_RET_TRUE);
  VX_Vector p(10, 20, 30), d(10, 20, 30);
  EXPECT_EQ((S{t.transform(p, 1.0f), t.transform(d, 0.0f), p == VX_Vector(11, 22, 33), d == VX_Vector(10, 20, 30),
               t.inverse(inv), inv.transform(p, 1.0f), p == VX_Vector(10, 20, 30)}),
            (S{VX_RET_TRUE, VX_RET_TRUE, 1, 1, VX_RET_TRUE, VX_RET_TRUE, 1}));

  // A 3-D matrix that was given another shape is refused where 4 × 4 is needed.
  VX_Matrix other(2, 2);
  t.VX_Matrix::operator=(other);
  EXPECT_EQ((S{t.transform(p, 1.0f), t.inverse(inv), t.setIdentity(), rep.mentions("Matrix is 2 x 2")}),
            (S{VX_RET_ERR_ARG, VX_RET_ERR_ARG, VX_RET_ERR_ARG, 1}));
}
