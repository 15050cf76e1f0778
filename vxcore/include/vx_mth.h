/// \file
/// Single-precision vectors and matrices: VX_Vector, VX_VectorArr, VX_Matrix, VX_3DMatrix and
/// the free functions on raw row-major float arrays.
///
/// The free functions take every dimension explicitly. Those that write an output read all of
/// their input first, so the output may be an input. Dimension failures are reported with the
/// matrix family's messages and return VX_RET_ERR_ARG; a null array is VX_RET_ERR_ARG too.
#ifndef VX_MTH_H
#define VX_MTH_H

#include "vx_base.h"  // VX_isPowerOf2 belongs to this family as well
#include "vx_mem.h"
#include "vx_persist.h"

class VX_OStream;

/// The zero threshold of the geometry classes: a divisor, length, product sum or determinant
/// whose magnitude is below it, and an elimination pivot or a component difference whose
/// magnitude is at or below it, counts as zero.
constexpr float VX_MTH_TOLERANCE = 0.001f;

/// VX_Vector: three floats, a plain value that owns nothing and cannot fail, except division
/// by a scalar below the tolerance, which is refused with a report ("Division by zero") and
/// leaves the value as it was. Equality is exact, component by component.
class VX_API VX_Vector {
 public:
  /// The zero vector.
  VX_Vector() : x(0.0f), y(0.0f), z(0.0f) {}
  /// The vector (x, y, z).
  VX_Vector(float x, float y, float z) : x(x), y(y), z(z) {}

  /// Component-wise sum and difference; the assigning forms change this vector and return it.
  ///@{
  VX_Vector operator+(const VX_Vector& v) const;
  VX_Vector& operator+=(const VX_Vector& v);
  VX_Vector operator-(const VX_Vector& v) const;
  VX_Vector& operator-=(const VX_Vector& v);
  ///@}
  /// 1 when the three components are exactly equal.
  unsigned char operator==(const VX_Vector& v) const;
  /// Dot product.
  float operator*(const VX_Vector& v) const;
  /// Scaled by `s`; the assigning form changes this vector.
  ///@{
  VX_Vector operator*(float s) const;
  VX_Vector& operator*=(float s);
  ///@}
  /// Scaled by 1 / `s`; refused (reported, the value unchanged) when |s| is below the
  /// tolerance.
  ///@{
  VX_Vector operator/(float s) const;
  VX_Vector& operator/=(float s);
  ///@}
  /// Cross product this × v (right-handed).
  VX_Vector operator&(const VX_Vector& v) const;
  /// The Euclidean length.
  float vlength() const;
  /// Unit length; a vector shorter than the tolerance becomes (0, 0, 0) without a report.
  VX_Vector& normalize();

  /// The components.
  ///@{
  float x, y, z;
  ///@}
};

/// `v` scaled by `s`.
VX_API VX_Vector operator*(float s, const VX_Vector& v);

/// The length of `v`, as VX_Vector::vlength.
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
  /// `n` zero vectors (none: an enabled empty array).
  explicit VX_VectorArr(unsigned int n = 0);
  /// n vectors from 3 × n coordinates, x, y, z of vector 0 first. The values after the first
  /// travel as C variadic arguments: pass floating-point values (1.0, not 1).
  VX_VectorArr(unsigned int n, float x0, ...);
  /// n vectors copied from `vecs` (n zero vectors when it is null).
  VX_VectorArr(unsigned int n, const VX_Vector* vecs);
  /// A copy of `other`'s vectors; disabled when `other` is (VX_RET_ERR_POBJ reported) or the
  /// block cannot be had.
  VX_VectorArr(const VX_VectorArr& other);
  /// Frees the block.
  ~VX_VectorArr() override;

  /// 0 after a failed construction.
  unsigned char objIsEnabled() const { return enabled; }
  /// The number of vectors (0 when disabled).
  unsigned int getNum() const { return enabled ? num : 0; }
  /// The block of getNum() vectors, owned by the array and replaced by an assignment; null
  /// when disabled or empty.
  VX_Vector* vecArrPtr() { return enabled ? vecs : nullptr; }
  /// Vector `i`; outside the array the index is reported and the sink VX_NULL_PTR returned.
  VX_Vector& operator[](unsigned int i);
  /// Sets vector `i`; an index outside the array or a null `v` is VX_RET_ERR_ARG.
  ///@{
  VX_RET_STATUS operator()(unsigned int i, float x, float y, float z);
  VX_RET_STATUS operator()(unsigned int i, const VX_Vector* v);
  ///@}

  /// Element-wise sum and difference as a new array, disabled when refused or out of memory.
  ///@{
  VX_VectorArr operator+(const VX_VectorArr& other) const;
  VX_VectorArr operator-(const VX_VectorArr& other) const;
  ///@}
  /// Element-wise sum and difference in place; a refusal leaves this array unchanged.
  ///@{
  VX_VectorArr& operator+=(const VX_VectorArr& other);
  VX_VectorArr& operator-=(const VX_VectorArr& other);
  ///@}
  /// Copies `other`'s vectors into a new block, whatever the lengths. A disabled side
  /// (VX_RET_ERR_POBJ) or a failed allocation is reported and leaves this array unchanged.
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

/// Copies rows × columns floats from `a` to `out` (the two may overlap).
VX_API VX_RET_STATUS VX_matrixCopy(unsigned int rows, unsigned int columns, const float* a, float* out);
/// All entries 0, then 1 on the leading diagonal (positions (i, i), i < min(rows, columns)).
VX_API VX_RET_STATUS VX_matrixSetIdentity(unsigned int rows, unsigned int columns, float* out);
/// out (columns × rows) = the transpose of a (rows × columns).
VX_API VX_RET_STATUS VX_matrixTrans(unsigned int rows, unsigned int columns, const float* a, float* out);
/// result (rowsA × columnsB) = a × b; columnsA must equal rowsB ("incompatible matrices").
/// Sums whose magnitude is below the tolerance are stored as exactly 0.
VX_API VX_RET_STATUS VX_matrixMult(float* result, unsigned int rowsA, unsigned int columnsA, const float* a,
                                   unsigned int rowsB, unsigned int columnsB, const float* b);
/// The determinant of `a`, by expansion along the first column (from 3 × 3 on, rows whose
/// first entry is negligible contribute nothing); 0 for a null, non-square or empty matrix
/// and when the working space cannot be had (reported). The cost grows with the factorial of
/// the size: this is for the small matrices of geometry.
VX_API float VX_matrixDet(unsigned int rows, unsigned int columns, const float* a);
/// out = the inverse of the square matrix `a`, by Gauss-Jordan elimination without division
/// until the final scaling. A matrix that is not square or is empty, or whose determinant is
/// below the tolerance ("Matrix not invertible"), is refused with VX_RET_ERR_ARG and `out` is
/// not touched; so it is when the working space cannot be had (VX_RET_ERR_MEM). Entries of the
/// result at or below the tolerance become 0.
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
  /// A rows × columns matrix of zeros; 0 × 0 is a usable empty matrix.
  VX_Matrix(unsigned int rows = 0, unsigned int columns = 0);
  /// rows × columns values, row by row; the values after the first travel as C variadic
  /// arguments: pass floating-point values (1.0, not 1).
  VX_Matrix(unsigned int rows, unsigned int columns, float value, ...);
  /// Copies rows × columns values (a zero matrix when `values` is null).
  VX_Matrix(const float* values, unsigned int rows, unsigned int columns);
  /// A copy of `other`; disabled when `other` is (VX_RET_ERR_POBJ reported) or memory fails.
  VX_Matrix(const VX_Matrix& other);
  /// Frees the entries.
  ~VX_Matrix() override;

  /// 0 after a failed construction.
  unsigned char objIsEnabled() const { return enabled; }
  /// The dimensions (0 when disabled).
  ///@{
  unsigned int getNumRows() const { return enabled ? rows : 0; }
  unsigned int getNumCols() const { return enabled ? columns : 0; }
  ///@}
  /// The row's first entry, inside the matrix's block: valid until an operation replaces the
  /// block (transpose, a product, an assignment or unpacking that changes the size). Null
  /// (reported) for a row outside the matrix or a disabled matrix.
  ///@{
  float* operator[](unsigned int row);
  const float* operator[](unsigned int row) const;
  ///@}
  /// The determinant, as VX_matrixDet; 0 (reported) for a matrix that is not square or is
  /// disabled.
  float determinant() const;
  /// Square and |determinant| strictly above the tolerance; 6 for a disabled matrix.
  unsigned char IsInvertible() const;
  /// Transposes in place, into a new block; VX_RET_ERR_MEM leaves the matrix unchanged.
  VX_RET_STATUS transpose();
  /// The product; a disabled matrix when the dimensions do not fit or memory fails.
  VX_Matrix operator*(const VX_Matrix& other) const;
  /// this = this × other; refused dimensions or a failed allocation are reported and leave
  /// this matrix unchanged.
  VX_Matrix& operator*=(const VX_Matrix& other);
  /// Takes the dimensions and entries of `other` (the block is reused when the entry count
  /// matches). A disabled side (VX_RET_ERR_POBJ) or a failed allocation is reported and
  /// leaves this matrix unchanged.
  VX_Matrix& operator=(const VX_Matrix& other);
  /// Same dimensions and exactly equal entries (two disabled matrices compare equal).
  unsigned char operator==(const VX_Matrix& other) const;

  /// The allocating pack of VX_Persistable, kept in view.
  using VX_Persistable::pack;
  /// Writes the packed form into `buffer`, which holds getPackedSize bytes; `size` gets the
  /// bytes written. A null buffer or a storage other than VX_STORAGE_BINARY is VX_RET_ERR_ARG.
  /// The version is not consulted.
  VX_RET_STATUS pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  /// 8 + 4 × rows × columns; 0 for a disabled matrix or a storage other than binary.
  unsigned int getPackedSize(VX_Version& version, VX_STORAGE_TYPE storage) override;
  /// Replaces dimensions and entries by the packed form in `buffer`; `size` gets the bytes
  /// read. Dimensions the bytes there cannot hold are VX_RET_ERR_ARG, the matrix unchanged.
  VX_RET_STATUS unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  /// Writes rows, columns and the entries as binary file fields; `size` gets the bytes
  /// written. A write error is returned as it comes, with part of the matrix written.
  VX_RET_STATUS persist(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;
  /// Reads what persist wrote and takes it over. Dimensions the rest of the file cannot hold
  /// are VX_RET_ERR_FILE; on any failure the matrix stays as it was.
  VX_RET_STATUS restore(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;

 protected:
  /// The entries, row-major, owned by the matrix.
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

/// Writes the entries, one line per row with the entries separated by spaces. A disabled
/// matrix writes nothing (VX_RET_ERR_POBJ reported).
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_Matrix& m);

/// VX_3DMatrix: a 4 × 4 transform of homogeneous row vectors: a point or direction
/// (x, y, z, w) becomes (x, y, z, w) × M, so a translation sits in row 3. It starts as the
/// identity. Unpacking or multiplying can give it another shape; transform and inverse then
/// refuse it (VX_RET_ERR_ARG, reporting its dimensions).
class VX_API VX_3DMatrix : public VX_Matrix {
 public:
  /// The 4 × 4 identity (disabled when memory fails).
  VX_3DMatrix();
  /// A copy of `other`, whatever its shape.
  VX_3DMatrix(const VX_3DMatrix& other);
  ~VX_3DMatrix() override;
  /// As VX_Matrix assignment: the shape is copied too.
  VX_3DMatrix& operator=(const VX_3DMatrix& other);

  /// Back to the identity; refused for another shape.
  VX_RET_STATUS setIdentity();
  /// The identity with row 3 = (t, 1).
  VX_RET_STATUS setTranslation(const VX_Vector& t);
  /// v becomes the x, y, z of (v, w) × M: w = 1 for a point, w = 0 for a direction. There is
  /// no perspective division.
  VX_RET_STATUS transform(VX_Vector& v, float w) const;
  /// out = the inverse, as VX_matrixInv (VX_RET_ERR_ARG for a singular matrix, `out`
  /// untouched); `out` must be 4 × 4 as well.
  VX_RET_STATUS inverse(VX_3DMatrix& out) const;

 private:
  VX_RET_STATUS isTransform(unsigned line) const;
};

#endif
