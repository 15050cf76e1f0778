/// \file
/// Single-precision vectors and matrices: VX_Vector, VX_VectorArr, VX_Matrix, VX_3DMatrix and
/// the free functions on raw row-major float arrays.
#ifndef VX_MTH_H
#define VX_MTH_H

#include "vx_base.h"  // VX_isPowerOf2 belongs to this family as well
#include "vx_mem.h"
#include "vx_persist.h"

class VX_OStream;

/// Values whose magnitude is at or below this count as zero in every numeric test of the
/// geometry classes (pivots, sums, divisors, parallel directions).
constexpr float VX_MTH_TOLERANCE = 0.001f;

/// VX_Vector: three floats, a plain value that owns nothing and cannot fail, except division
/// by a scalar below the tolerance, which is refused with a report ("Division by zero") and
/// leaves the value as it was. Equality is exact, component by component.
class VX_API VX_Vector {
 public:
  VX_Vector() : x(0.0f), y(0.0f), z(0.0f) {}
  VX_Vector(float x, float y, float z) : x(x), y(y), z(z) {}

  VX_Vector operator+(const VX_Vector& v) const;
  VX_Vector& operator+=(const VX_Vector& v);
  VX_Vector operator-(const VX_Vector& v) const;
  VX_Vector& operator-=(const VX_Vector& v);
  unsigned char operator==(const VX_Vector& v) const;
  /// Dot product.
  float operator*(const VX_Vector& v) const;
  VX_Vector operator*(float s) const;
  VX_Vector& operator*=(float s);
  /// Refused (reported, unchanged copy) when |s| is below the tolerance.
  VX_Vector operator/(float s) const;
  VX_Vector& operator/=(float s);
  /// Cross product this × v (right-handed).
  VX_Vector operator&(const VX_Vector& v) const;
  float vlength() const;
  /// Unit length; a vector shorter than the tolerance becomes (0, 0, 0) without a report.
  VX_Vector& normalize();

  float x, y, z;
};

VX_API VX_Vector operator*(float s, const VX_Vector& v);

VX_API float VX_vectorMagnitude(const VX_Vector& v);
/// Normalises `v` in place as VX_Vector::normalize does and returns it.
VX_API VX_Vector& VX_vectorNormalize(VX_Vector& v);
/// The ordinary right-handed cross product a × b.
VX_API VX_Vector VX_crossProduct(const VX_Vector& a, const VX_Vector& b);
/// True when normalised copies of a and b are equal or opposite within the tolerance per
/// component. A vector shorter than the tolerance normalises to zero, so it is parallel only
/// to another such vector.
VX_API unsigned char VX_vectorsParallel(const VX_Vector& a, const VX_Vector& b);

/// VX_VectorArr: a fixed number of vectors in one owned block. Element-wise sums and
/// differences need arrays of the same length ("Array args have different number of
/// vertices"); a refused or failed operation leaves its target unchanged, and an operator that
/// returns a new array returns a disabled one. A constructor that cannot allocate leaves the
/// array disabled; operations on a disabled array report VX_RET_ERR_POBJ. Indexes outside the
/// array report the range and yield the sink VX_NULL_PTR.
class VX_API VX_VectorArr : public VX_VorlaxeClass {
 public:
  explicit VX_VectorArr(unsigned int n = 0);
  /// n vectors from 3 × n coordinates, x, y, z of vector 0 first. The values after the first
  /// travel as C variadic arguments: pass floating-point values (1.0, not 1).
  VX_VectorArr(unsigned int n, float x0, ...);
  /// n vectors copied from `vecs` (n zero vectors when it is null).
  VX_VectorArr(unsigned int n, const VX_Vector* vecs);
  VX_VectorArr(const VX_VectorArr& other);
  ~VX_VectorArr() override;

  unsigned char objIsEnabled() const { return enabled; }
  unsigned int getNum() const { return enabled ? num : 0; }
  VX_Vector* vecArrPtr() { return enabled ? vecs : nullptr; }
  VX_Vector& operator[](unsigned int i);
  VX_RET_STATUS operator()(unsigned int i, float x, float y, float z);
  VX_RET_STATUS operator()(unsigned int i, const VX_Vector* v);

  VX_VectorArr operator+(const VX_VectorArr& other) const;
  VX_VectorArr operator-(const VX_VectorArr& other) const;
  VX_VectorArr& operator+=(const VX_VectorArr& other);
  VX_VectorArr& operator-=(const VX_VectorArr& other);
  VX_VectorArr& operator=(const VX_VectorArr& other);

 private:
  void initDataMembers();
  void cleanupDataMembers();
  /// Takes n vectors from `from` (zeros when null) into a new block; VX_RET_ERR_MEM reported
  /// under `label`, and the array keeps what it had.
  VX_RET_STATUS assign(unsigned int n, const VX_Vector* from, const char* label);
  /// Both arrays usable and of one length, else reported under `label`.
  VX_RET_STATUS compatible(const VX_VectorArr& other, const char* label) const;
  VX_VectorArr combined(const VX_VectorArr& other, float sign, const char* label) const;
  VX_VectorArr& combine(const VX_VectorArr& other, float sign, const char* label);

  unsigned char enabled;
  unsigned int num;
  VX_Vector* vecs;
};

/// Free functions on row-major float arrays; every dimension is passed explicitly. Those that
/// write an output read all of their input first, so the output may be an input. Dimension
/// failures are reported with the matrix family's messages and return VX_RET_ERR_ARG; a null
/// array is VX_RET_ERR_ARG too.
VX_API VX_RET_STATUS VX_matrixCopy(unsigned int rows, unsigned int columns, const float* a, float* out);
/// All entries 0, then 1 on the leading diagonal (positions (i, i), i < min(rows, columns)).
VX_API VX_RET_STATUS VX_matrixSetIdentity(unsigned int rows, unsigned int columns, float* out);
/// out (columns × rows) = the transpose of a (rows × columns).
VX_API VX_RET_STATUS VX_matrixTrans(unsigned int rows, unsigned int columns, const float* a, float* out);
/// result (rowsA × columnsB) = a × b; columnsA must equal rowsB ("incompatible matrices").
/// Sums whose magnitude is below the tolerance are stored as exactly 0.
VX_API VX_RET_STATUS VX_matrixMult(float* result, unsigned int rowsA, unsigned int columnsA, const float* a,
                                   unsigned int rowsB, unsigned int columnsB, const float* b);
/// Expansion along the first column (rows whose first entry is negligible contribute nothing);
/// 0 for a matrix that is not square or whose working space cannot be had. The cost grows
/// with the factorial of the size: this is for the small matrices of geometry.
VX_API float VX_matrixDet(unsigned int rows, unsigned int columns, const float* a);
/// Gauss-Jordan elimination without division until the final scaling. A matrix whose
/// determinant is below the tolerance is refused ("Matrix not invertible", VX_RET_ERR_ARG)
/// and `out` is not touched. Entries of the result at or below the tolerance become 0.
VX_API VX_RET_STATUS VX_matrixInv(unsigned int rows, unsigned int columns, const float* a, float* out);

/// VX_Matrix: rows × columns floats, row-major, in an owned memory block. A constructor that
/// cannot allocate, or whose dimensions would need more than a packed block can describe
/// (4 × rows × columns + 8 bytes within 32 bits), leaves the matrix disabled; operations on a
/// disabled matrix report VX_RET_ERR_POBJ. Operations refused for their dimensions report and
/// leave the matrix unchanged; so does a failed allocation.
///
/// Packed form (binary storage only): rows and columns as 32-bit numbers, then the entries
/// row by row as 4-byte floats. Unpacking checks the dimensions against the bytes there before
/// it allocates.
class VX_API VX_Matrix : public VX_Persistable {
 public:
  VX_Matrix(unsigned int rows = 0, unsigned int columns = 0);
  /// rows × columns values, row by row; the values after the first travel as C variadic
  /// arguments: pass floating-point values (1.0, not 1).
  VX_Matrix(unsigned int rows, unsigned int columns, float value, ...);
  /// Copies rows × columns values (a zero matrix when `values` is null).
  VX_Matrix(const float* values, unsigned int rows, unsigned int columns);
  VX_Matrix(const VX_Matrix& other);
  ~VX_Matrix() override;

  unsigned char objIsEnabled() const { return enabled; }
  unsigned int getNumRows() const { return enabled ? rows : 0; }
  unsigned int getNumCols() const { return enabled ? columns : 0; }
  /// The row's first entry; null (reported) for a row outside the matrix.
  float* operator[](unsigned int row);
  const float* operator[](unsigned int row) const;
  /// 0 (reported) for a matrix that is not square.
  float determinant() const;
  /// Square and |determinant| strictly above the tolerance; 6 for a disabled matrix.
  unsigned char IsInvertible() const;
  VX_RET_STATUS transpose();
  /// The product; a disabled matrix when the dimensions do not fit or memory fails.
  VX_Matrix operator*(const VX_Matrix& other) const;
  VX_Matrix& operator*=(const VX_Matrix& other);
  VX_Matrix& operator=(const VX_Matrix& other);
  /// Same dimensions and exactly equal entries.
  unsigned char operator==(const VX_Matrix& other) const;

  using VX_Persistable::pack;
  VX_RET_STATUS pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  unsigned int getPackedSize(VX_Version& version, VX_STORAGE_TYPE storage) override;
  VX_RET_STATUS unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  VX_RET_STATUS persist(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;
  VX_RET_STATUS restore(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;

 protected:
  float* entries() const { return static_cast<float*>(data.memPtr()); }
  /// Refuses (reported) a disabled matrix.
  VX_RET_STATUS usable(unsigned line) const;
  /// Takes a block of rows × columns floats made by allocEntries; the old block goes.
  void adopt(float* block, unsigned int newRows, unsigned int newColumns);
  /// A zeroed block for rows × columns floats; null (reported) when it cannot be had or the
  /// dimensions are too large.
  static float* allocEntries(unsigned int rows, unsigned int columns, unsigned line);
  /// this × other into a new block (null unless the result is a success).
  VX_RET_STATUS product(const VX_Matrix& other, float*& block) const;

 private:
  void initDataMembers(unsigned int rows, unsigned int columns);
  void cleanupDataMembers();

  VX_Memory data;
  unsigned char enabled;
  unsigned int rows;
  unsigned int columns;
};

VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_Matrix& m);

/// VX_3DMatrix: a 4 × 4 transform of homogeneous row vectors: a point or direction
/// (x, y, z, w) becomes (x, y, z, w) × M, so a translation sits in row 3. It starts as the
/// identity. Unpacking or multiplying can give it another shape; transform and inverse then
/// refuse it (VX_RET_ERR_ARG, "Matrix is %d x %d").
class VX_API VX_3DMatrix : public VX_Matrix {
 public:
  VX_3DMatrix();
  VX_3DMatrix(const VX_3DMatrix& other);
  ~VX_3DMatrix() override;
  VX_3DMatrix& operator=(const VX_3DMatrix& other);

  VX_RET_STATUS setIdentity();
  /// The identity with row 3 = (t, 1).
  VX_RET_STATUS setTranslation(const VX_Vector& t);
  /// v becomes the x, y, z of (v, w) × M: w = 1 for a point, w = 0 for a direction. There is
  /// no perspective division.
  VX_RET_STATUS transform(VX_Vector& v, float w) const;
  VX_RET_STATUS inverse(VX_3DMatrix& out) const;

 private:
  VX_RET_STATUS isTransform(unsigned line) const;
};

#endif
