/// \file
/// The viewing camera, its plain state values and spherical coordinates.
///
/// Conventions: space is right-handed. Camera space has its origin at the camera's position,
/// x to the right, y up and z pointing back from the interest towards the position, so the
/// camera looks down its -z axis. Transforms are VX_3DMatrix row-vector transforms:
/// (x, y, z, w) × M.
#ifndef VX_CAMERA_H
#define VX_CAMERA_H

#include "vx_mth.h"

/// VX_ViewFrustrum: four floats. The camera reads f1 and f2 as the nearest and farthest
/// distance between position and interest in perspective mode, and f3 as the orthographic
/// scale (never taken below 0.5 by a zoom); f0 is carried along unused.
struct VX_API VX_ViewFrustrum {
  /// (0, 0, 0, 1).
  VX_ViewFrustrum() : f0(0.0f), f1(0.0f), f2(0.0f), f3(1.0f) {}
  /// The four values as given.
  VX_ViewFrustrum(float f0, float f1, float f2, float f3) : f0(f0), f1(f1), f2(f2), f3(f3) {}
  /// 1 when the four values are exactly equal.
  unsigned char operator==(const VX_ViewFrustrum& o) const {
    return f0 == o.f0 && f1 == o.f1 && f2 == o.f2 && f3 == o.f3;
  }

  /// The four values, read as described for the structure.
  ///@{
  float f0, f1, f2, f3;
  ///@}
};

/// VX_CamStruct: the camera's whole pose as one plain value; equality is member-wise and exact.
struct VX_API VX_CamStruct {
  /// 1 when all four members are exactly equal.
  unsigned char operator==(const VX_CamStruct& o) const {
    return interest == o.interest && position == o.position && up == o.up && frustum == o.frustum;
  }

  VX_Vector interest;  ///< the point looked at
  VX_Vector position;  ///< the camera's place
  VX_Vector up;  ///< the upward direction (need not be unit length or square to the view)
  VX_ViewFrustrum frustum;  ///< the distance range and orthographic scale
};

/// VX_SphCoord: radius r, azimuth theta and polar angle phi, with y as the polar axis:
/// x = r sin(theta) sin(phi), y = r cos(phi), z = r cos(theta) sin(phi).
class VX_API VX_SphCoord {
 public:
  /// The origin: all zeros.
  VX_SphCoord() : r(0.0f), theta(0.0f), phi(0.0f) {}
  /// The coordinates as given (angles in radians).
  VX_SphCoord(float r, float theta, float phi) : r(r), theta(theta), phi(phi) {}
  /// The coordinates of `v`, as set.
  explicit VX_SphCoord(const VX_Vector& v) : VX_SphCoord() { set(v); }

  /// From a Cartesian vector: a vector shorter than the tolerance gives all zeros, and one on
  /// the polar axis gets theta 0.
  VX_SphCoord& set(const VX_Vector& v);
  /// The Cartesian vector, written to `out` and returned.
  VX_Vector& getvct(VX_Vector& out) const;

  /// Radius, azimuth and polar angle (radians), as the formulas above use them.
  ///@{
  float r, theta, phi;
  ///@}
};

/// Rotates `v` in place by `angle` radians about the axis `dir` (through the origin), by the
/// right-hand rule: looking from the tip of `dir` towards the origin, a positive angle turns
/// counter-clockwise. An axis shorter than the tolerance is refused (VX_RET_ERR_ARG).
VX_API VX_RET_STATUS VX_rotateAboutDir(float angle, const VX_Vector& dir, VX_Vector& v);

/// An orthonormal right-handed basis from a y and a z direction: z is kept, x = y × z, and y is
/// made again as z × x. Rows 0 to 2 of `out` are x, y and z with 0 in column 3, row 3 is
/// (0, 0, 0, 1); as a row-vector transform it turns basis coordinates into world directions.
/// Parallel or negligible inputs are refused (VX_RET_ERR_ARG), as is an `out` that is not 4 × 4.
VX_API VX_RET_STATUS VX_computeTransMatFromYZ(const VX_Vector& y, const VX_Vector& z, VX_3DMatrix& out);

/// VX_Camera: an interest point, a position, an up vector, a frustum, a projection flag and
/// the two cached transforms between camera and world space, recomputed on demand while the
/// `dirty` flag says the pose has changed. It owns only the two matrices; a camera that cannot
/// allocate them is disabled, and every operation on a disabled camera reports
/// VX_RET_ERR_POBJ and returns 6. A pose whose viewing direction (position - interest) is
/// negligible or parallel to `up` has no transforms: the conversions then return 0 and leave
/// their vector unchanged. A default camera is not dirty, so until its pose is set it
/// converts with its initial identity matrices.
///
/// The moves return 1 when they changed the pose, 0 when the move was below the tolerance or
/// had nothing to move along, or a failure status; each says which applies.
class VX_API VX_Camera : public VX_VorlaxeClass {
 public:
  /// Everything zero (frustum (0, 0, 0, 1)), perspective, identity transforms, not dirty.
  VX_Camera();
  /// A perspective camera in the given pose; the transforms are computed on first use.
  VX_Camera(const VX_Vector& interest, const VX_Vector& position, const VX_Vector& up,
            const VX_ViewFrustrum& frustum);
  ~VX_Camera() override;

  /// 0 when the two matrices could not be allocated.
  unsigned char objIsEnabled() const { return enabled; }

  /// The position: copied out / replaced (which marks the transforms dirty). A disabled
  /// camera leaves both sides untouched.
  ///@{
  VX_RET_STATUS getPosition(VX_Vector& out);
  VX_RET_STATUS setPosition(const VX_Vector& v);
  ///@}
  /// The interest point: copied out / replaced (which marks the transforms dirty).
  ///@{
  VX_RET_STATUS getInterest(VX_Vector& out);
  VX_RET_STATUS setInterest(const VX_Vector& v);
  ///@}
  /// The up vector: copied out / replaced (which marks the transforms dirty). It need not be
  /// unit length or square to the viewing direction; the transforms make it so.
  ///@{
  VX_RET_STATUS getUpVector(VX_Vector& out);
  VX_RET_STATUS setUpVector(const VX_Vector& v);
  ///@}
  /// Copies the frustum out.
  VX_RET_STATUS getFrustrum(VX_ViewFrustrum& out);
  /// The frustum does not enter the transforms, so it leaves `dirty` alone.
  VX_RET_STATUS setFrustrum(const VX_ViewFrustrum& f);
  /// The whole pose: copied out / replaced (which marks the transforms dirty).
  ///@{
  VX_RET_STATUS getCameraStruct(VX_CamStruct& out);
  VX_RET_STATUS setCameraStruct(const VX_CamStruct& s);
  ///@}
  /// The projection flag (nonzero: orthographic). It changes only what zoom does; reading it
  /// on a disabled camera gives 6.
  ///@{
  unsigned char isOrthographic();
  VX_RET_STATUS setOrthographic(unsigned char on);
  ///@}
  /// Whether the cached transforms wait for a recomputation.
  unsigned char isDirty() const { return dirty; }

  /// Perspective: moves the position along the viewing line by `delta` (positive away from the
  /// interest), kept strictly between f1 and f2 (by the tolerance); 0 when position and
  /// interest coincide. Orthographic: changes the scale f3 unless that would take it below
  /// 0.5, and answers 1 even when it refused. |delta| below the tolerance does nothing (0).
  VX_RET_STATUS zoom(float delta);
  /// Moves interest and position together by (dx, dy) of camera space (x right, y up); 0 when
  /// the pose has no transforms.
  VX_RET_STATUS pan(float dx, float dy);
  /// Turns the up vector by `angle` radians about the viewing direction (right-hand rule
  /// about position - interest); VX_RET_ERR_ARG when position and interest coincide.
  VX_RET_STATUS roll(float angle);
  /// Moves the position on its sphere around the interest: theta about the world y axis, phi
  /// from the world +y pole, kept within [0.001, 3.1405928] so the camera never crosses a
  /// pole. 0 when both changes are below the tolerance; the move is made even for a pose
  /// without transforms.
  VX_RET_STATUS orbit(float dTheta, float dPhi);

  /// Converts a direction (a displacement) in place: only the rotation applies. 0, `v`
  /// unchanged, when the pose has no transforms.
  ///@{
  VX_RET_STATUS camToWorldSpace(VX_Vector& v);
  VX_RET_STATUS worldToCamSpace(VX_Vector& v);
  ///@}
  /// Converts a point in place: the camera's position is the origin of camera space. 0, `v`
  /// unchanged, when the pose has no transforms.
  ///@{
  VX_RET_STATUS camToWorldPoint(VX_Vector& v);
  VX_RET_STATUS worldToCamPoint(VX_Vector& v);
  ///@}

  /// Copies pose, projection flag, dirty flag and transforms; a disabled side is reported
  /// (VX_RET_ERR_POBJ) and this camera stays as it was.
  VX_Camera& operator=(const VX_Camera& other);
  /// Same object, or the same pose, the same `dirty` flag and the same cached matrices. The
  /// orthographic flag is not compared; the `dirty` flag is, so a camera with pending
  /// transforms differs from one in the same pose whose transforms are current.
  unsigned char operator==(const VX_Camera& other) const;

 private:
  VX_Camera(const VX_Camera&);
  void initDataMembers();
  void cleanupDataMembers();
  VX_RET_STATUS usable(unsigned line) const;
  /// worldToCam and camToWorld for the present pose; VX_RET_FALSE for a pose without them.
  VX_RET_STATUS computeTransformMatrices();
  /// Brings the transforms up to date and applies one of them to (v, w).
  VX_RET_STATUS convert(VX_Vector& v, bool toWorld, float w);
  /// The plain accessors: `to = from` once the camera is found usable. `stale` (0 or 1) marks
  /// the transforms as behind the pose, for the setters that move it.
  template <class T>
  VX_RET_STATUS copyIfUsable(T& to, const T& from, unsigned char stale);

  unsigned char enabled;
  VX_CamStruct cam;
  unsigned char orthographic;
  unsigned char dirty;
  VX_3DMatrix camToWorld;
  VX_3DMatrix worldToCam;
};

#endif
