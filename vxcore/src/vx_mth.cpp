// Vectors, vector arrays and matrices.
#define VX_MODULE_LABEL ".\\src\\vx_mth"

#include "vx_mth.h"

#include <cmath>
#include <cstdarg>
#include <cstdint>

#include "vx_file.h"
#include "vx_iostream.h"
#include "vx_report.h"
#include "vx_varargs.h"
#include "vx_unpack.h"

namespace {

inline bool negligible(float v) { return std::fabs(v) <= VX_MTH_TOLERANCE; }

// Catalogue texts of the general (0), vector-array (2) and matrix (3) families.
inline const char* generalMsg(unsigned n) { return VX_msg(0, n); }
inline const char* vecArrMsg(unsigned n) { return VX_msg(2, n); }
inline const char* matrixMsg(unsigned n) { return VX_msg(3, n); }

// The largest number of entries a matrix may have: its packed size, 8 + 4 per entry, must be
// a 32-bit number.
constexpr uint64_t VX_MATRIX_MAX_ENTRIES = (UINT32_MAX - 8u) / 4u;

bool entriesFit(unsigned int rows, unsigned int columns) {
  return static_cast<uint64_t>(rows) * columns <= VX_MATRIX_MAX_ENTRIES;
}

// True when the n floats at `a` and the m floats at `b` share memory.
bool overlaps(const float* a, uint64_t n, const float* b, uint64_t m) { return a < b + m && b < a + n; }

// A scratch block of n floats for a result that must not be written over its inputs; null
// (reported) when it cannot be had.
float* scratch(uint64_t n, unsigned line) {
  float* block = static_cast<float*>(VX_malloc(n ? n * sizeof(float) : 1));
  if (!block) VX_reportStatus(VX_RET_ERR_MEM, VX_MODULE_LABEL, line);
  return block;
}

// Reports dimensions that do not suit an operation; yields VX_RET_ERR_ARG.
VX_RET_STATUS badShape(const char* label, unsigned line, unsigned rows, unsigned columns) {
  VX_reportErrorMsg(VX_MODULE_LABEL, line, label, matrixMsg(3), rows, columns);
  return VX_RET_ERR_ARG;
}

// Determinant of the square block formed by the `m` rows listed in `rowList` and the
// columns c .. c+m-1 of the n-column matrix a, expanded along its first column. `work` holds
// room for the row lists of every deeper level.
float expandDet(const float* a, unsigned n, const unsigned* rowList, unsigned m, unsigned c, unsigned* work) {
  auto at = [&](unsigned r, unsigned col) { return a[static_cast<uint64_t>(rowList[r]) * n + col]; };
  if (m == 1) return at(0, c);
  if (m == 2) return at(0, c) * at(1, c + 1) - at(0, c + 1) * at(1, c);
  float det = 0.0f;
  float sign = 1.0f;
  for (unsigned i = 0; i < m; ++i, sign = -sign) {
    float lead = at(i, c);
    if (negligible(lead)) continue;
    unsigned k = 0;
    for (unsigned r = 0; r < m; ++r)
      if (r != i) work[k++] = rowList[r];
    det += sign * lead * expandDet(a, n, work, m - 1, c + 1, work + (m - 1));
  }
  return det;
}

// One division-free elimination step: row `target` = |pivot| × row target ∓ |entry| × row
// `pivotRow`, the sign chosen to cancel the entry in column `col`.
void cancelEntry(float* aug, unsigned width, unsigned pivotRow, unsigned target, unsigned col) {
  float* p = aug + static_cast<uint64_t>(pivotRow) * width;
  float* t = aug + static_cast<uint64_t>(target) * width;
  float pivot = p[col], entry = t[col];
  float s = (pivot < 0.0f) != (entry < 0.0f) ? 1.0f : -1.0f;
  float keep = std::fabs(pivot), take = s * std::fabs(entry);
  float largest = 0.0f;
  for (unsigned k = 0; k < width; ++k) {
    t[k] = keep * t[k] + take * p[k];
    if (k != col) largest = std::fmax(largest, std::fabs(t[k]));
  }
  t[col] = 0.0f;  // exactly, whatever the rounding of the products
  // Without division every step multiplies a row by a pivot, so magnitudes drift geometrically:
  // small pivots (a rotation's entries) sink later pivots below the tolerance, large ones
  // overflow a longer elimination. The combined row is brought back to a largest entry in
  // [1, 2) by a power of two: exact in binary floating point, so nothing is rounded, and the
  // final scaling by the diagonal undoes it.
  if (largest > 0.0f && (largest < 1.0f || largest >= 2.0f)) {
    int exponent = 0;
    std::frexp(largest, &exponent);
    for (unsigned k = 0; k < width; ++k) t[k] = std::ldexp(t[k], 1 - exponent);
  }
}

void swapRows(float* aug, unsigned width, unsigned i, unsigned k) {
  float* a = aug + static_cast<uint64_t>(i) * width;
  float* b = aug + static_cast<uint64_t>(k) * width;
  for (unsigned c = 0; c < width; ++c) {
    float t = a[c];
    a[c] = b[c];
    b[c] = t;
  }
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// VX_Vector

VX_Vector VX_Vector::operator+(const VX_Vector& v) const {
  VX_setUserError(0);
  return VX_Vector(x + v.x, y + v.y, z + v.z);
}

VX_Vector& VX_Vector::operator+=(const VX_Vector& v) {
  VX_setUserError(0);
  x += v.x;
  y += v.y;
  z += v.z;
  return *this;
}

VX_Vector VX_Vector::operator-(const VX_Vector& v) const {
  VX_setUserError(0);
  return VX_Vector(x - v.x, y - v.y, z - v.z);
}

VX_Vector& VX_Vector::operator-=(const VX_Vector& v) {
  VX_setUserError(0);
  x -= v.x;
  y -= v.y;
  z -= v.z;
  return *this;
}

unsigned char VX_Vector::operator==(const VX_Vector& v) const {
  VX_setUserError(0);
  return this == &v || (x == v.x && y == v.y && z == v.z);
}

float VX_Vector::operator*(const VX_Vector& v) const {
  VX_setUserError(0);
  return x * v.x + y * v.y + z * v.z;
}

VX_Vector VX_Vector::operator*(float s) const {
  VX_setUserError(0);
  return VX_Vector(x * s, y * s, z * s);
}

VX_Vector& VX_Vector::operator*=(float s) {
  VX_setUserError(0);
  x *= s;
  y *= s;
  z *= s;
  return *this;
}

VX_Vector VX_Vector::operator/(float s) const {
  VX_Vector v(*this);
  return v /= s;
}

VX_Vector& VX_Vector::operator/=(float s) {
  VX_setUserError(0);
  if (std::fabs(s) < VX_MTH_TOLERANCE) {
    VX_REPORT_ERROR("VX_Vector: divide method", generalMsg(4));
    return *this;
  }
  return *this *= 1.0f / s;
}

VX_Vector VX_Vector::operator&(const VX_Vector& v) const { return VX_crossProduct(*this, v); }

float VX_Vector::vlength() const {
  VX_setUserError(0);
  return std::sqrt(x * x + y * y + z * z);
}

VX_Vector& VX_Vector::normalize() {
  float len = vlength();
  if (len < VX_MTH_TOLERANCE) {
    x = y = z = 0.0f;
    return *this;
  }
  return *this /= len;
}

VX_Vector operator*(float s, const VX_Vector& v) { return v * s; }

float VX_vectorMagnitude(const VX_Vector& v) { return v.vlength(); }

VX_Vector& VX_vectorNormalize(VX_Vector& v) { return v.normalize(); }

VX_Vector VX_crossProduct(const VX_Vector& a, const VX_Vector& b) {
  VX_setUserError(0);
  return VX_Vector(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

unsigned char VX_vectorsParallel(const VX_Vector& a, const VX_Vector& b) {
  VX_setUserError(0);
  VX_Vector u(a), v(b);
  u.normalize();
  v.normalize();
  auto near = [](const VX_Vector& p, const VX_Vector& q) {
    return negligible(p.x - q.x) && negligible(p.y - q.y) && negligible(p.z - q.z);
  };
  return near(u, v) || near(u, v * -1.0f);
}

// ---------------------------------------------------------------------------------------------
// VX_VectorArr

VX_VectorArr::VX_VectorArr(unsigned int n) : VX_VorlaxeClass() {
  VX_setUserError(0);
  initDataMembers();
  if (assign(n, nullptr, vecArrMsg(1)) > 2) cleanupDataMembers();
}

VX_VectorArr::VX_VectorArr(unsigned int n, float x0, ...) : VX_VorlaxeClass() {
  VX_setUserError(0);
  initDataMembers();
  if (assign(n, nullptr, vecArrMsg(1)) > 2) {
    cleanupDataMembers();
    return;
  }
  va_list args;
  VX_VA_START(args, x0);
  for (uint64_t k = 0; k < 3ull * n; ++k) {
    VX_Vector& v = vecs[k / 3];
    float* component[3] = {&v.x, &v.y, &v.z};
    *component[k % 3] = k == 0 ? x0 : static_cast<float>(va_arg(args, double));
  }
  va_end(args);
}

VX_VectorArr::VX_VectorArr(unsigned int n, const VX_Vector* from) : VX_VorlaxeClass() {
  VX_setUserError(0);
  initDataMembers();
  if (assign(n, from, vecArrMsg(1)) > 2) cleanupDataMembers();
}

VX_VectorArr::VX_VectorArr(const VX_VectorArr& other) : VX_VorlaxeClass() {
  VX_setUserError(0);
  initDataMembers();
  if (!other.enabled) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    cleanupDataMembers();
    return;
  }
  if (assign(other.num, other.vecs, vecArrMsg(2)) > 2) cleanupDataMembers();
}

VX_VectorArr::~VX_VectorArr() { cleanupDataMembers(); }

void VX_VectorArr::initDataMembers() {
  enabled = 1;
  num = 0;
  vecs = nullptr;
}

void VX_VectorArr::cleanupDataMembers() {
  VX_deleteArray(vecs);
  vecs = nullptr;
  num = 0;
  enabled = 0;
}

VX_RET_STATUS VX_VectorArr::assign(unsigned int n, const VX_Vector* from, const char* label) {
  VX_Vector* block = nullptr;
  if (n) {
    block = VX_newArray<VX_Vector>(n);
    if (!block) {
      VX_REPORT_ERROR(label, generalMsg(1));
      return VX_RET_ERR_MEM;
    }
    if (from)
      for (unsigned k = 0; k < n; ++k) block[k] = from[k];
  }
  VX_deleteArray(vecs);
  vecs = block;
  num = n;
  return VX_RET_TRUE;
}

VX_Vector& VX_VectorArr::operator[](unsigned int i) {
  VX_setUserError(0);
  if (!enabled) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return VX_nullRef<VX_Vector>();
  }
  if (i >= num) {
    VX_REPORT_ERROR(vecArrMsg(10), generalMsg(3), static_cast<int>(i), 0, static_cast<int>(num) - 1);
    return VX_nullRef<VX_Vector>();
  }
  return vecs[i];
}

VX_RET_STATUS VX_VectorArr::operator()(unsigned int i, float x, float y, float z) {
  VX_Vector v(x, y, z);
  return (*this)(i, &v);
}

VX_RET_STATUS VX_VectorArr::operator()(unsigned int i, const VX_Vector* v) {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  if (!v) return VX_FAIL(VX_RET_ERR_ARG);
  if (i >= num) {
    VX_REPORT_ERROR(vecArrMsg(10), generalMsg(3), static_cast<int>(i), 0, static_cast<int>(num) - 1);
    return VX_RET_ERR_ARG;
  }
  vecs[i] = *v;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_VectorArr::compatible(const VX_VectorArr& other, const char* label) const {
  if (!enabled || !other.enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  if (num != other.num) {
    VX_REPORT_ERROR(label, vecArrMsg(8));
    return VX_RET_ERR_ARG;
  }
  return VX_RET_TRUE;
}

VX_VectorArr VX_VectorArr::combined(const VX_VectorArr& other, float sign, const char* label) const {
  VX_setUserError(0);
  VX_VectorArr result(0);
  if (compatible(other, label) > 2 || result.assign(num, vecs, label) > 2) {
    result.cleanupDataMembers();
    return result;
  }
  for (unsigned k = 0; k < num; ++k) result.vecs[k] += other.vecs[k] * sign;
  return result;
}

VX_VectorArr& VX_VectorArr::combine(const VX_VectorArr& other, float sign, const char* label) {
  VX_setUserError(0);
  if (compatible(other, label) > 2) return *this;
  for (unsigned k = 0; k < num; ++k) vecs[k] += other.vecs[k] * sign;
  return *this;
}

VX_VectorArr VX_VectorArr::operator+(const VX_VectorArr& other) const { return combined(other, 1.0f, vecArrMsg(6)); }
VX_VectorArr VX_VectorArr::operator-(const VX_VectorArr& other) const {
  return combined(other, -1.0f, vecArrMsg(7));
}
VX_VectorArr& VX_VectorArr::operator+=(const VX_VectorArr& other) { return combine(other, 1.0f, vecArrMsg(4)); }
VX_VectorArr& VX_VectorArr::operator-=(const VX_VectorArr& other) { return combine(other, -1.0f, vecArrMsg(5)); }

VX_VectorArr& VX_VectorArr::operator=(const VX_VectorArr& other) {
  VX_setUserError(0);
  if (&other == this) return *this;
  if (!enabled || !other.enabled) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return *this;
  }
  assign(other.num, other.vecs, vecArrMsg(3));
  return *this;
}

// ---------------------------------------------------------------------------------------------
// Free functions on row-major arrays

VX_RET_STATUS VX_matrixCopy(unsigned int rows, unsigned int columns, const float* a, float* out) {
  VX_setUserError(0);
  if (!a || !out) return VX_FAIL(VX_RET_ERR_ARG);
  if (a != out) std::memmove(out, a, static_cast<uint64_t>(rows) * columns * sizeof(float));
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_matrixSetIdentity(unsigned int rows, unsigned int columns, float* out) {
  VX_setUserError(0);
  if (!out) return VX_FAIL(VX_RET_ERR_ARG);
  uint64_t n = static_cast<uint64_t>(rows) * columns;
  for (uint64_t k = 0; k < n; ++k) out[k] = 0.0f;
  for (unsigned i = 0; i < rows && i < columns; ++i) out[static_cast<uint64_t>(i) * columns + i] = 1.0f;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_matrixTrans(unsigned int rows, unsigned int columns, const float* a, float* out) {
  VX_setUserError(0);
  if (!a || !out) return VX_FAIL(VX_RET_ERR_ARG);
  uint64_t n = static_cast<uint64_t>(rows) * columns;
  float* target = out;
  if (overlaps(a, n, out, n) && !(target = scratch(n, __LINE__))) return VX_RET_ERR_MEM;
  for (unsigned i = 0; i < rows; ++i)
    for (unsigned j = 0; j < columns; ++j)
      target[static_cast<uint64_t>(j) * rows + i] = a[static_cast<uint64_t>(i) * columns + j];
  if (target != out) {
    std::memcpy(out, target, n * sizeof(float));
    VX_free(target);
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_matrixMult(float* result, unsigned int rowsA, unsigned int columnsA, const float* a,
                            unsigned int rowsB, unsigned int columnsB, const float* b) {
  VX_setUserError(0);
  if (!result || !a || !b) return VX_FAIL(VX_RET_ERR_ARG);
  if (columnsA != rowsB) {
    VX_REPORT_ERROR(matrixMsg(4), matrixMsg(5), rowsA, columnsA, rowsB, columnsB);
    return VX_RET_ERR_ARG;
  }
  uint64_t nr = static_cast<uint64_t>(rowsA) * columnsB;
  uint64_t na = static_cast<uint64_t>(rowsA) * columnsA, nb = static_cast<uint64_t>(rowsB) * columnsB;
  float* target = result;
  if ((overlaps(result, nr, a, na) || overlaps(result, nr, b, nb)) && !(target = scratch(nr, __LINE__)))
    return VX_RET_ERR_MEM;
  for (unsigned i = 0; i < rowsA; ++i)
    for (unsigned j = 0; j < columnsB; ++j) {
      float sum = 0.0f;
      for (unsigned k = 0; k < rowsB; ++k)
        sum += a[static_cast<uint64_t>(i) * columnsA + k] * b[static_cast<uint64_t>(k) * columnsB + j];
      target[static_cast<uint64_t>(i) * columnsB + j] = std::fabs(sum) < VX_MTH_TOLERANCE ? 0.0f : sum;
    }
  if (target != result) {
    std::memcpy(result, target, nr * sizeof(float));
    VX_free(target);
  }
  return VX_RET_TRUE;
}

namespace {

// The determinant of the square n × n matrix a; VX_RET_ERR_MEM (reported) when the working
// space for the minors cannot be had.
VX_RET_STATUS squareDet(unsigned n, const float* a, float& det) {
  det = 0.0f;
  if (n == 0) return VX_RET_TRUE;
  if (n == 1 || n == 2) {
    det = n == 1 ? a[0] : a[0] * a[3] - a[1] * a[2];
    return VX_RET_TRUE;
  }
  // Row lists of every level: n for the top, then n-1, n-2, ... for the minors.
  uint64_t listSpace = static_cast<uint64_t>(n) * (n + 1) / 2;
  unsigned* lists = static_cast<unsigned*>(VX_malloc(listSpace * sizeof(unsigned)));
  if (!lists) {
    VX_REPORT_ERROR(matrixMsg(8), generalMsg(1));
    return VX_RET_ERR_MEM;
  }
  for (unsigned r = 0; r < n; ++r) lists[r] = r;
  det = expandDet(a, n, lists, n, 0, lists + n);
  VX_free(lists);
  return VX_RET_TRUE;
}

}  // namespace

float VX_matrixDet(unsigned int rows, unsigned int columns, const float* a) {
  VX_setUserError(0);
  float det = 0.0f;
  if (a && rows == columns) squareDet(rows, a, det);
  return det;
}

VX_RET_STATUS VX_matrixInv(unsigned int rows, unsigned int columns, const float* a, float* out) {
  VX_setUserError(0);
  if (!a || !out) return VX_FAIL(VX_RET_ERR_ARG);
  if (rows != columns || rows == 0) {
    VX_REPORT_ERROR(matrixMsg(9), matrixMsg(2));
    return VX_RET_ERR_ARG;
  }
  if (!entriesFit(rows, 2 * columns)) return badShape(matrixMsg(9), __LINE__, rows, columns);
  const unsigned n = rows, width = 2 * n;
  float det = 0.0f;
  VX_RET_STATUS st = squareDet(n, a, det);
  if (st > 2) return st;
  if (std::fabs(det) < VX_MTH_TOLERANCE) {
    VX_REPORT_ERROR(matrixMsg(9), matrixMsg(10));
    return VX_RET_ERR_ARG;
  }
  float* aug = scratch(static_cast<uint64_t>(n) * width, __LINE__);
  if (!aug) return VX_RET_ERR_MEM;
  auto at = [&](unsigned r, unsigned c) -> float& { return aug[static_cast<uint64_t>(r) * width + c]; };
  for (unsigned r = 0; r < n; ++r)
    for (unsigned c = 0; c < n; ++c) {
      at(r, c) = a[static_cast<uint64_t>(r) * n + c];
      at(r, n + c) = r == c ? 1.0f : 0.0f;
    }
  // Pivot repair: a negligible diagonal entry is exchanged with a row that has a usable entry
  // in its column and that can take this row's entry on its own diagonal.
  for (unsigned i = 0; i < n; ++i) {
    if (!negligible(at(i, i))) continue;
    for (unsigned k = 0; k < n; ++k)
      if (k != i && !negligible(at(k, i)) && !negligible(at(i, k))) swapRows(aug, width, i, k);
  }
  // Forward elimination. A pivot the repair could not mend (a cyclic arrangement of zeros)
  // would wipe out its column; it is taken from the first row below that has a usable entry.
  for (unsigned i = 0; i < n; ++i) {
    if (negligible(at(i, i)))
      for (unsigned k = i + 1; k < n; ++k)
        if (!negligible(at(k, i))) {
          swapRows(aug, width, i, k);
          break;
        }
    if (negligible(at(i, i))) break;  // found below, after the elimination
    for (unsigned j = i + 1; j < n; ++j)
      if (!negligible(at(j, i))) cancelEntry(aug, width, i, j, i);
  }
  bool singular = false;
  for (unsigned i = 0; i < n; ++i) singular = singular || negligible(at(i, i));
  if (singular) {
    VX_free(aug);
    VX_REPORT_ERROR(matrixMsg(9), matrixMsg(10));
    return VX_RET_ERR_ARG;
  }
  // Backward elimination, from the last pivot upwards.
  for (unsigned i = n - 1; i > 0; --i)
    for (unsigned j = i; j-- > 0;)
      if (!negligible(at(j, i))) cancelEntry(aug, width, i, j, i);
  for (unsigned r = 0; r < n; ++r) {
    float scale = 1.0f / at(r, r);
    for (unsigned c = 0; c < n; ++c) {
      float v = at(r, n + c) * scale;
      out[static_cast<uint64_t>(r) * n + c] = negligible(v) ? 0.0f : v;
    }
  }
  VX_free(aug);
  return VX_RET_TRUE;
}

// ---------------------------------------------------------------------------------------------
// VX_Matrix

VX_Matrix::VX_Matrix(unsigned int rows, unsigned int columns) : data(0) {
  VX_setUserError(0);
  initDataMembers(rows, columns);
}

VX_Matrix::VX_Matrix(unsigned int rows, unsigned int columns, float value, ...) : data(0) {
  VX_setUserError(0);
  initDataMembers(rows, columns);
  if (!enabled) return;
  float* e = entries();
  uint64_t n = static_cast<uint64_t>(rows) * columns;
  va_list args;
  VX_VA_START(args, value);
  for (uint64_t k = 0; k < n; ++k) e[k] = k == 0 ? value : static_cast<float>(va_arg(args, double));
  va_end(args);
}

VX_Matrix::VX_Matrix(const float* values, unsigned int rows, unsigned int columns) : data(0) {
  VX_setUserError(0);
  initDataMembers(rows, columns);
  if (enabled && values) VX_matrixCopy(rows, columns, values, entries());
}

VX_Matrix::VX_Matrix(const VX_Matrix& other) : VX_Persistable(), data(0) {
  VX_setUserError(0);
  if (!other.enabled) {
    enabled = 0;
    rows = columns = 0;
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return;
  }
  initDataMembers(other.rows, other.columns);
  if (enabled) VX_matrixCopy(rows, columns, other.entries(), entries());
}

VX_Matrix::~VX_Matrix() { cleanupDataMembers(); }

void VX_Matrix::initDataMembers(unsigned int newRows, unsigned int newColumns) {
  enabled = 0;
  rows = columns = 0;
  float* block = allocEntries(newRows, newColumns, __LINE__);
  if (!block) return;
  adopt(block, newRows, newColumns);
  enabled = 1;
}

void VX_Matrix::cleanupDataMembers() {
  if (data.objIsEnabled()) data.memFree();
  rows = columns = 0;
  enabled = 0;
}

float* VX_Matrix::allocEntries(unsigned int newRows, unsigned int newColumns, unsigned line) {
  if (!entriesFit(newRows, newColumns)) {
    badShape(matrixMsg(0), line, newRows, newColumns);
    return nullptr;
  }
  uint64_t n = static_cast<uint64_t>(newRows) * newColumns;
  // One byte for an empty matrix, so that "no block" always means failure.
  float* block = static_cast<float*>(VX_calloc(n ? n : 1, sizeof(float)));
  if (!block) VX_reportErrorMsg(VX_MODULE_LABEL, line, matrixMsg(0), generalMsg(1));
  return block;
}

void VX_Matrix::adopt(float* block, unsigned int newRows, unsigned int newColumns) {
  data.memFree();
  uint64_t n = static_cast<uint64_t>(newRows) * newColumns;
  data.memSet(block, static_cast<unsigned>((n ? n : 1) * sizeof(float)));
  rows = newRows;
  columns = newColumns;
}

VX_RET_STATUS VX_Matrix::usable(unsigned line) const {
  if (enabled) return VX_RET_TRUE;
  return VX_reportFail(VX_RET_ERR_POBJ, VX_MODULE_LABEL, line);
}

float* VX_Matrix::operator[](unsigned int row) {
  return const_cast<float*>(static_cast<const VX_Matrix&>(*this)[row]);
}

const float* VX_Matrix::operator[](unsigned int row) const {
  VX_setUserError(0);
  if (usable(__LINE__) > 2) return nullptr;
  if (row >= rows) {
    VX_REPORT_ERROR(matrixMsg(6), generalMsg(3), static_cast<int>(row), 0, static_cast<int>(rows) - 1);
    return nullptr;
  }
  return entries() + static_cast<uint64_t>(row) * columns;
}

float VX_Matrix::determinant() const {
  VX_setUserError(0);
  if (usable(__LINE__) > 2) return 0.0f;
  if (rows != columns) {
    VX_REPORT_ERROR(matrixMsg(8), matrixMsg(2));
    return 0.0f;
  }
  return VX_matrixDet(rows, columns, entries());
}

unsigned char VX_Matrix::IsInvertible() const {
  VX_setUserError(0);
  if (usable(__LINE__) > 2) return VX_RET_ERR_POBJ;
  if (rows != columns) return 0;
  return std::fabs(VX_matrixDet(rows, columns, entries())) > VX_MTH_TOLERANCE;
}

VX_RET_STATUS VX_Matrix::transpose() {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  float* block = allocEntries(columns, rows, __LINE__);
  if (!block) return VX_RET_ERR_MEM;
  VX_matrixTrans(rows, columns, entries(), block);
  adopt(block, columns, rows);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Matrix::product(const VX_Matrix& other, float*& block) const {
  block = nullptr;
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2 || (st = other.usable(__LINE__)) > 2) return st;
  if (columns != other.rows) {
    VX_REPORT_ERROR(matrixMsg(4), matrixMsg(5), rows, columns, other.rows, other.columns);
    return VX_RET_ERR_ARG;
  }
  if (!(block = allocEntries(rows, other.columns, __LINE__))) return VX_RET_ERR_MEM;
  st = VX_matrixMult(block, rows, columns, entries(), other.rows, other.columns, other.entries());
  if (st > 2) {
    VX_free(block);
    block = nullptr;
  }
  return st;
}

VX_Matrix VX_Matrix::operator*(const VX_Matrix& other) const {
  VX_setUserError(0);
  VX_Matrix result(0, 0);
  float* block = nullptr;
  if (!result.enabled || product(other, block) > 2) {
    VX_free(block);
    result.cleanupDataMembers();
    return result;
  }
  result.adopt(block, rows, other.columns);
  return result;
}

VX_Matrix& VX_Matrix::operator*=(const VX_Matrix& other) {
  VX_setUserError(0);
  float* block = nullptr;
  if (product(other, block) <= 2) adopt(block, rows, other.columns);
  return *this;
}

VX_Matrix& VX_Matrix::operator=(const VX_Matrix& other) {
  VX_setUserError(0);
  if (&other == this) return *this;
  if (usable(__LINE__) > 2 || other.usable(__LINE__) > 2) return *this;
  uint64_t n = static_cast<uint64_t>(other.rows) * other.columns;
  if (n != static_cast<uint64_t>(rows) * columns) {
    float* block = allocEntries(other.rows, other.columns, __LINE__);
    if (!block) return *this;
    adopt(block, other.rows, other.columns);
  }
  rows = other.rows;
  columns = other.columns;
  VX_matrixCopy(rows, columns, other.entries(), entries());
  return *this;
}

unsigned char VX_Matrix::operator==(const VX_Matrix& other) const {
  VX_setUserError(0);
  if (&other == this) return 1;
  if (enabled != other.enabled || rows != other.rows || columns != other.columns) return 0;
  uint64_t n = static_cast<uint64_t>(rows) * columns;
  for (uint64_t k = 0; k < n; ++k)
    if (entries()[k] != other.entries()[k]) return 0;
  return 1;
}

unsigned int VX_Matrix::getPackedSize(VX_Version&, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  if (usable(__LINE__) > 2 || storage != VX_STORAGE_BINARY) return 0;
  // entriesFit keeps every matrix within a block; the sum is still made without wrapping.
  return VX_packedSizeAdd(8, static_cast<uint64_t>(rows) * columns > VX_MATRIX_MAX_ENTRIES ? VX_PACKED_SIZE_OVERFLOW : 4 * rows * columns);
}

VX_RET_STATUS VX_Matrix::pack(VX_Version&, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  size = 0;
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  if (!buffer || storage != VX_STORAGE_BINARY) return VX_FAIL(VX_RET_ERR_ARG);
  VX_putLE(buffer, static_cast<uint32_t>(rows));
  VX_putLE(buffer + 4, static_cast<uint32_t>(columns));
  uint64_t n = static_cast<uint64_t>(rows) * columns;
  for (uint64_t k = 0; k < n; ++k) VX_putLE(buffer + 8 + 4 * k, entries()[k]);
  size = static_cast<unsigned>(8 + 4 * n);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Matrix::unpack(VX_Version&, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  size = 0;
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  if (!buffer || storage != VX_STORAGE_BINARY) return VX_FAIL(VX_RET_ERR_ARG);
  if (!VX_unpackHas(buffer, 8)) {
    VX_REPORT_ERROR("VX_Matrix unpack", "Packed matrix needs 8 bytes, %lu there",
                    static_cast<unsigned long>(VX_unpackAvail(buffer)));
    return VX_RET_ERR_ARG;
  }
  uint32_t r = VX_getLE<uint32_t>(buffer), c = VX_getLE<uint32_t>(buffer + 4);
  uint64_t n = static_cast<uint64_t>(r) * c;
  // A product beyond what any block can describe, or beyond the bytes that are there, is
  // refused before anything is allocated for it.
  if (!entriesFit(r, c) || !VX_unpackHas(buffer + 8, static_cast<std::size_t>(4 * n))) {
    VX_REPORT_ERROR("VX_Matrix unpack", matrixMsg(3), r, c);
    return VX_RET_ERR_ARG;
  }
  float* block = allocEntries(r, c, __LINE__);
  if (!block) return VX_RET_ERR_MEM;
  for (uint64_t k = 0; k < n; ++k) block[k] = VX_getLE<float>(buffer + 8 + 4 * k);
  adopt(block, r, c);
  size = static_cast<unsigned>(8 + 4 * n);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Matrix::persist(VX_Version&, VX_FileBinary& file, unsigned int& size) {
  VX_setUserError(0);
  size = 0;
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  unsigned n = 0;
  for (uint32_t dim : {static_cast<uint32_t>(rows), static_cast<uint32_t>(columns)}) {
    if ((st = persistVal(dim, file, n)) > 2) return st;
    size += n;
  }
  uint64_t count = static_cast<uint64_t>(rows) * columns;
  for (uint64_t k = 0; k < count; ++k) {
    if ((st = persistVal(entries()[k], file, n)) > 2) return st;
    size += n;
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Matrix::restore(VX_Version&, VX_FileBinary& file, unsigned int& size) {
  VX_setUserError(0);
  size = 0;
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  uint32_t dims[2] = {0, 0};
  unsigned n = 0;
  for (uint32_t& dim : dims) {
    if ((st = restoreVal(dim, file, n)) > 2) return st;
    size += n;
  }
  uint64_t count = static_cast<uint64_t>(dims[0]) * dims[1];
  long left = file.length() - file.tell();
  if (!entriesFit(dims[0], dims[1]) || left < 0 || count > static_cast<uint64_t>(left) / 4) {
    VX_REPORT_ERROR("VX_Matrix restore", matrixMsg(3), dims[0], dims[1]);
    return VX_RET_ERR_FILE;
  }
  float* block = allocEntries(dims[0], dims[1], __LINE__);
  if (!block) return VX_RET_ERR_MEM;
  for (uint64_t k = 0; k < count; ++k) {
    if ((st = restoreVal(block[k], file, n)) > 2) {
      VX_free(block);
      return st;
    }
    size += n;
  }
  adopt(block, dims[0], dims[1]);
  return VX_RET_TRUE;
}

VX_OStream& operator<<(VX_OStream& stream, const VX_Matrix& m) {
  VX_setUserError(0);
  if (!m.objIsEnabled()) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return stream;
  }
  for (unsigned r = 0; r < m.getNumRows(); ++r) {
    const float* row = m[r];
    for (unsigned c = 0; c < m.getNumCols(); ++c) stream << (c ? " " : "") << row[c];
    stream << "\n";
  }
  return stream;
}

// ---------------------------------------------------------------------------------------------
// VX_3DMatrix

VX_3DMatrix::VX_3DMatrix() : VX_Matrix(4, 4) { setIdentity(); }

VX_3DMatrix::VX_3DMatrix(const VX_3DMatrix& other) : VX_Matrix(other) {}

VX_3DMatrix::~VX_3DMatrix() = default;

VX_3DMatrix& VX_3DMatrix::operator=(const VX_3DMatrix& other) {
  VX_Matrix::operator=(other);
  return *this;
}

VX_RET_STATUS VX_3DMatrix::isTransform(unsigned line) const {
  VX_RET_STATUS st = usable(line);
  if (st > 2) return st;
  if (getNumRows() == 4 && getNumCols() == 4) return VX_RET_TRUE;
  return badShape(matrixMsg(0), line, getNumRows(), getNumCols());
}

VX_RET_STATUS VX_3DMatrix::setIdentity() {
  VX_setUserError(0);
  VX_RET_STATUS st = isTransform(__LINE__);
  return st > 2 ? st : VX_matrixSetIdentity(4, 4, entries());
}

VX_RET_STATUS VX_3DMatrix::setTranslation(const VX_Vector& t) {
  VX_RET_STATUS st = setIdentity();
  if (st > 2) return st;
  float* row3 = entries() + 12;
  row3[0] = t.x;
  row3[1] = t.y;
  row3[2] = t.z;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_3DMatrix::transform(VX_Vector& v, float w) const {
  VX_setUserError(0);
  VX_RET_STATUS st = isTransform(__LINE__);
  if (st > 2) return st;
  const float* m = entries();
  float in[4] = {v.x, v.y, v.z, w}, out[3] = {0.0f, 0.0f, 0.0f};
  for (unsigned c = 0; c < 3; ++c)
    for (unsigned k = 0; k < 4; ++k) out[c] += in[k] * m[4 * k + c];
  v = VX_Vector(out[0], out[1], out[2]);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_3DMatrix::inverse(VX_3DMatrix& out) const {
  VX_setUserError(0);
  VX_RET_STATUS st = isTransform(__LINE__);
  if (st > 2 || (st = out.isTransform(__LINE__)) > 2) return st;
  return VX_matrixInv(4, 4, entries(), out.entries());
}
