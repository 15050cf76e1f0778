// The viewing camera and spherical coordinates.
#define VX_MODULE_LABEL ".\\src\\vx_camera"

#include "vx_camera.h"

#include <cmath>

#include "vx_report.h"

namespace {

// The polar angle never reaches either pole, so the up vector is never parallel to the
// viewing direction after an orbit.
constexpr float VX_CAM_PHI_MAX = 3.1405928f;
constexpr float VX_CAM_PHI_MIN = 0.001f;
// The orthographic scale a zoom never goes below.
constexpr float VX_CAM_ORTHO_MIN = 0.5f;

bool negligible(const VX_Vector& v) { return v.vlength() < VX_MTH_TOLERANCE; }

}  // namespace

// ---------------------------------------------------------------------------------------------
// Spherical coordinates and the two basis helpers

VX_SphCoord& VX_SphCoord::set(const VX_Vector& v) {
  VX_setUserError(0);
  r = v.vlength();
  theta = phi = 0.0f;
  if (r < VX_MTH_TOLERANCE) return *this;
  bool onAxis = std::fabs(v.x) < VX_MTH_TOLERANCE && std::fabs(v.z) < VX_MTH_TOLERANCE;
  theta = onAxis ? 0.0f : std::atan2(v.x, v.z);
  float q = v.y / r;
  phi = std::acos(q > 1.0f ? 1.0f : q < -1.0f ? -1.0f : q);
  return *this;
}

VX_Vector& VX_SphCoord::getvct(VX_Vector& out) const {
  VX_setUserError(0);
  float s = std::sin(phi);
  out = VX_Vector(r * std::sin(theta) * s, r * std::cos(phi), r * std::cos(theta) * s);
  return out;
}

VX_RET_STATUS VX_rotateAboutDir(float angle, const VX_Vector& dir, VX_Vector& v) {
  VX_setUserError(0);
  if (negligible(dir)) return VX_FAIL(VX_RET_ERR_ARG);
  VX_Vector a(dir);
  a.normalize();
  float s = std::sin(angle), c = std::cos(angle), t = 1.0f - c;
  // Row-vector form of the axis-angle rotation: row k is the image of the k-th unit vector.
  const float m[16] = {t * a.x * a.x + c,       t * a.x * a.y + s * a.z, t * a.x * a.z - s * a.y, 0.0f,
                       t * a.x * a.y - s * a.z, t * a.y * a.y + c,       t * a.y * a.z + s * a.x, 0.0f,
                       t * a.x * a.z + s * a.y, t * a.y * a.z - s * a.x, t * a.z * a.z + c,       0.0f,
                       0.0f,                    0.0f,                    0.0f,                    1.0f};
  VX_3DMatrix rot;
  if (!rot.objIsEnabled()) return VX_RET_ERR_MEM;  // reported by the matrix
  VX_matrixCopy(4, 4, m, rot[0]);
  return rot.transform(v, 0.0f);
}

VX_RET_STATUS VX_computeTransMatFromYZ(const VX_Vector& y, const VX_Vector& z, VX_3DMatrix& out) {
  VX_setUserError(0);
  if (negligible(y) || negligible(z) || VX_vectorsParallel(y, z)) return VX_FAIL(VX_RET_ERR_ARG);
  VX_RET_STATUS st = out.setIdentity();
  if (st > 2) return st;
  VX_Vector ey(y), ez(z);
  ey.normalize();
  ez.normalize();
  VX_Vector ex = VX_crossProduct(ey, ez).normalize();
  ey = VX_crossProduct(ez, ex);
  const VX_Vector* basis[3] = {&ex, &ey, &ez};
  for (unsigned i = 0; i < 3; ++i) {
    float* row = out[i];
    row[0] = basis[i]->x;
    row[1] = basis[i]->y;
    row[2] = basis[i]->z;
  }
  return VX_RET_TRUE;
}

// ---------------------------------------------------------------------------------------------
// VX_Camera

VX_Camera::VX_Camera() : VX_VorlaxeClass() {
  VX_setUserError(0);
  initDataMembers();
}

VX_Camera::VX_Camera(const VX_Vector& interest, const VX_Vector& position, const VX_Vector& up,
                     const VX_ViewFrustrum& frustum)
    : VX_VorlaxeClass() {
  VX_setUserError(0);
  initDataMembers();
  cam.interest = interest;
  cam.position = position;
  cam.up = up;
  cam.frustum = frustum;
  dirty = 1;
}

VX_Camera::~VX_Camera() { cleanupDataMembers(); }

void VX_Camera::initDataMembers() {
  cam.interest = cam.position = cam.up = VX_Vector();
  cam.frustum.f0 = cam.frustum.f1 = cam.frustum.f2 = 0.0f;  // f3 keeps its constructed 1.0
  orthographic = dirty = 0;
  enabled = camToWorld.objIsEnabled() && worldToCam.objIsEnabled();
}

void VX_Camera::cleanupDataMembers() { enabled = 0; }

VX_RET_STATUS VX_Camera::usable(unsigned line) const {
  if (enabled) return VX_RET_TRUE;
  return VX_reportFail(VX_RET_ERR_POBJ, VX_MODULE_LABEL, line);
}

template <class T>
VX_RET_STATUS VX_Camera::copyIfUsable(T& to, const T& from, unsigned char stale) {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  to = from;
  dirty |= stale;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Camera::getPosition(VX_Vector& out) { return copyIfUsable(out, cam.position, 0); }
VX_RET_STATUS VX_Camera::getInterest(VX_Vector& out) { return copyIfUsable(out, cam.interest, 0); }
VX_RET_STATUS VX_Camera::getUpVector(VX_Vector& out) { return copyIfUsable(out, cam.up, 0); }
VX_RET_STATUS VX_Camera::getFrustrum(VX_ViewFrustrum& out) { return copyIfUsable(out, cam.frustum, 0); }
VX_RET_STATUS VX_Camera::getCameraStruct(VX_CamStruct& out) { return copyIfUsable(out, cam, 0); }

// The frustum takes no part in the camera-space transforms: setting it leaves them current.
VX_RET_STATUS VX_Camera::setPosition(const VX_Vector& v) { return copyIfUsable(cam.position, v, 1); }
VX_RET_STATUS VX_Camera::setInterest(const VX_Vector& v) { return copyIfUsable(cam.interest, v, 1); }
VX_RET_STATUS VX_Camera::setUpVector(const VX_Vector& v) { return copyIfUsable(cam.up, v, 1); }
VX_RET_STATUS VX_Camera::setFrustrum(const VX_ViewFrustrum& f) { return copyIfUsable(cam.frustum, f, 0); }
VX_RET_STATUS VX_Camera::setCameraStruct(const VX_CamStruct& s) { return copyIfUsable(cam, s, 1); }

unsigned char VX_Camera::isOrthographic() {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  return st > 2 ? static_cast<unsigned char>(st) : orthographic;
}

VX_RET_STATUS VX_Camera::setOrthographic(unsigned char on) { return copyIfUsable(orthographic, on, 0); }

VX_RET_STATUS VX_Camera::zoom(float delta) {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  if (std::fabs(delta) < VX_MTH_TOLERANCE) return VX_RET_FALSE;
  if (orthographic) {
    // Only the scale changes, which the transforms do not depend on.
    if (cam.frustum.f3 + delta >= VX_CAM_ORTHO_MIN) cam.frustum.f3 += delta;
    return VX_RET_TRUE;
  }
  VX_Vector d = cam.position - cam.interest;
  float len = d.vlength();
  if (len < VX_MTH_TOLERANCE) return VX_RET_FALSE;  // no viewing line to move along
  float wanted = len + delta;
  if (wanted <= cam.frustum.f1)
    wanted = cam.frustum.f1 + VX_MTH_TOLERANCE;
  else if (wanted >= cam.frustum.f2)
    wanted = cam.frustum.f2 - VX_MTH_TOLERANCE;
  cam.position = cam.interest + d * (wanted / len);
  dirty = 1;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Camera::pan(float dx, float dy) {
  VX_setUserError(0);
  VX_Vector shift(dx, dy, 0.0f);
  VX_RET_STATUS st = camToWorldSpace(shift);
  if (st > 2 || st == VX_RET_FALSE) return st;
  cam.interest += shift;
  cam.position += shift;
  dirty = 1;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Camera::roll(float angle) {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  VX_Vector up(cam.up);
  if ((st = VX_rotateAboutDir(angle, cam.position - cam.interest, up)) > 2) return st;
  cam.up = up;
  dirty = 1;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Camera::orbit(float dTheta, float dPhi) {
  VX_setUserError(0);
  VX_Vector unused(dTheta, dPhi, 0.0f);
  VX_RET_STATUS st = camToWorldSpace(unused);  // brings the transforms up to date
  if (st > 2) return st;
  if (std::fabs(dTheta) < VX_MTH_TOLERANCE && std::fabs(dPhi) < VX_MTH_TOLERANCE) return VX_RET_FALSE;
  VX_SphCoord s(cam.position - cam.interest);
  s.theta += dTheta;
  s.phi += dPhi;
  if (s.phi > VX_CAM_PHI_MAX)
    s.phi = VX_CAM_PHI_MAX;
  else if (s.phi < VX_CAM_PHI_MIN)
    s.phi = VX_CAM_PHI_MIN;
  VX_Vector rel;
  cam.position = cam.interest + s.getvct(rel);
  dirty = 1;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Camera::computeTransformMatrices() {
  VX_Vector dir = cam.position - cam.interest;
  if (negligible(dir) || negligible(cam.up) || VX_vectorsParallel(cam.up, dir)) return VX_RET_FALSE;
  // basis: camera coordinates to world directions; its transpose takes world directions into
  // camera space, after the translation that brings the position to the origin.
  VX_3DMatrix basis, toCam, fromCam;
  if (!basis.objIsEnabled() || !toCam.objIsEnabled() || !fromCam.objIsEnabled()) return VX_RET_ERR_MEM;
  VX_RET_STATUS st = VX_computeTransMatFromYZ(cam.up, dir, basis);
  if (st > 2 || (st = basis.transpose()) > 2) return st;
  if ((st = toCam.setTranslation(cam.position * -1.0f)) > 2) return st;
  toCam *= basis;
  if ((st = toCam.inverse(fromCam)) > 2) return st;
  worldToCam = toCam;
  camToWorld = fromCam;
  dirty = 0;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Camera::convert(VX_Vector& v, bool toWorld, float w) {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  if (dirty && ((st = computeTransformMatrices()) > 2 || st == VX_RET_FALSE)) return st;
  return (toWorld ? camToWorld : worldToCam).transform(v, w);
}

VX_RET_STATUS VX_Camera::camToWorldSpace(VX_Vector& v) { return convert(v, true, 0.0f); }
VX_RET_STATUS VX_Camera::worldToCamSpace(VX_Vector& v) { return convert(v, false, 0.0f); }
VX_RET_STATUS VX_Camera::camToWorldPoint(VX_Vector& v) { return convert(v, true, 1.0f); }
VX_RET_STATUS VX_Camera::worldToCamPoint(VX_Vector& v) { return convert(v, false, 1.0f); }

VX_Camera& VX_Camera::operator=(const VX_Camera& other) {
  VX_setUserError(0);
  if (&other == this || usable(__LINE__) > 2 || other.usable(__LINE__) > 2) return *this;
  // Both matrices are 4 × 4 on both sides, so the copies below move entries only.
  cam = other.cam;
  orthographic = other.orthographic;
  dirty = other.dirty;
  camToWorld = other.camToWorld;
  worldToCam = other.worldToCam;
  return *this;
}

unsigned char VX_Camera::operator==(const VX_Camera& other) const {
  VX_setUserError(0);
  if (&other == this) return 1;
  return cam == other.cam && dirty == other.dirty && camToWorld == other.camToWorld &&
         worldToCam == other.worldToCam;
}
