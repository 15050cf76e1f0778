#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "vx_test_support.h"

namespace {

using S = std::vector<int>;

constexpr float kPi = 3.14159265f;

::testing::AssertionResult near(const VX_Vector& a, const VX_Vector& b, float tol = 1e-3f) {
  if (std::fabs(a.x - b.x) <= tol && std::fabs(a.y - b.y) <= tol && std::fabs(a.z - b.z) <= tol)
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "(" << a.x << ", " << a.y << ", " << a.z << ") vs (" << b.x << ", " << b.y
                                       << ", " << b.z << ")";
}

VX_Vector positionOf(VX_Camera& c) { VX_Vector v; return c.getPosition(v), v; }
VX_Vector interestOf(VX_Camera& c) { VX_Vector v; return c.getInterest(v), v; }

// A camera 10 units down +z from the origin, looking at it, y up, distances kept in (1, 100).
VX_Camera standard() {
  return VX_Camera(VX_Vector(0, 0, 0), VX_Vector(0, 0, 10), VX_Vector(0, 1, 0), VX_ViewFrustrum(0, 1, 100, 1));
}

}  // namespace

TEST(SphCoord, ConvertsWithYAsThePolarAxisAndRoundTrips) {
  VX_SphCoord zero(VX_Vector(0, 0, 0)), pole(VX_Vector(0, 5, 0)), south(VX_Vector(0, -2, 0));
  EXPECT_EQ((std::vector<float>{zero.r, zero.theta, zero.phi, pole.r, pole.theta, pole.phi, south.phi}),
            (std::vector<float>{0, 0, 0, 5, 0, 0, kPi}));
  VX_SphCoord onZ(VX_Vector(0, 0, 3)), onX(VX_Vector(2, 0, 0));
  EXPECT_TRUE(near(VX_Vector(onZ.theta, onX.theta, onX.phi), VX_Vector(0, kPi / 2, kPi / 2), 1e-6f));

  std::mt19937 rng(3);
  std::uniform_real_distribution<float> d(-20.0f, 20.0f);
  for (int k = 0; k < 200; ++k) {
    VX_Vector v(d(rng), d(rng), d(rng)), back;
    VX_SphCoord s;
    s.set(v).getvct(back);
    EXPECT_TRUE(near(back, v, 1e-4f * v.vlength() + 1e-5f));
  }
}

TEST(CameraHelpers, RotationAndBasisAreRightHanded) {
  vxtest::CaptureReporter rep;
  VX_Vector v(1, 0, 0), w(0, 1, 0);
  EXPECT_EQ(VX_rotateAboutDir(kPi / 2, VX_Vector(0, 0, 5), v), VX_RET_TRUE);
  VX_rotateAboutDir(kPi / 2, VX_Vector(1, 0, 0), w);
  EXPECT_TRUE(near(v, VX_Vector(0, 1, 0), 1e-6f) && near(w, VX_Vector(0, 0, 1), 1e-6f));
  // Components along the axis stay, lengths are kept.
  VX_Vector u(3, 4, 5), axis(1, 1, 1);
  VX_rotateAboutDir(1.234f, axis, u);
  EXPECT_NEAR(u * axis, 12.0f, 1e-4f);
  EXPECT_NEAR(u.vlength(), std::sqrt(50.0f), 1e-4f);
  EXPECT_EQ(VX_rotateAboutDir(1.0f, VX_Vector(0, 0.0001f, 0), u), VX_RET_ERR_ARG);

  VX_3DMatrix m;
  EXPECT_EQ(VX_computeTransMatFromYZ(VX_Vector(0.2f, 3, 1), VX_Vector(0, 0, -2), m), VX_RET_TRUE);
  VX_Vector x(m[0][0], m[0][1], m[0][2]), y(m[1][0], m[1][1], m[1][2]), z(m[2][0], m[2][1], m[2][2]);
  EXPECT_TRUE(near(z, VX_Vector(0, 0, -1), 1e-6f));  // z is kept, y is straightened
  EXPECT_TRUE(near(y, VX_Vector(0.2f, 3, 0).normalize(), 1e-6f));
  EXPECT_TRUE(near(x & y, z, 1e-6f));
  EXPECT_NEAR(m.determinant(), 1.0f, 1e-5f);
  EXPECT_EQ((std::vector<float>{m[0][3], m[1][3], m[2][3], m[3][0], m[3][1], m[3][2], m[3][3]}),
            (std::vector<float>{0, 0, 0, 0, 0, 0, 1}));
  EXPECT_EQ((S{VX_computeTransMatFromYZ(VX_Vector(0, 1, 0), VX_Vector(0, -3, 0), m),
               VX_computeTransMatFromYZ(VX_Vector(), VX_Vector(0, 0, 1), m)}),
            (S{VX_RET_ERR_ARG, VX_RET_ERR_ARG}));
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 3);
}

TEST(Camera, ConvertsBetweenCameraAndWorldSpace) {
  VX_Camera cam = standard();
  EXPECT_EQ(cam.isDirty(), 1);
  VX_Vector interest(0, 0, 0), right(1, 0, 0), ahead(0, 0, -1);
  EXPECT_EQ((S{cam.worldToCamPoint(interest), cam.camToWorldSpace(right), cam.camToWorldSpace(ahead), cam.isDirty()}),
            (S{VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE, 0}));
  EXPECT_TRUE(near(interest, VX_Vector(0, 0, -10)));  // the camera looks down its -z axis
  EXPECT_TRUE(near(right, VX_Vector(1, 0, 0)));
  EXPECT_TRUE(near(ahead, VX_Vector(0, 0, -1)));

  // Any pose: points and directions go there and back; directions keep their length.
  std::mt19937 rng(9);
  std::uniform_real_distribution<float> d(-50.0f, 50.0f);
  for (int k = 0; k < 50; ++k) {
    VX_Camera c(VX_Vector(d(rng), d(rng), d(rng)), VX_Vector(d(rng), d(rng), d(rng)), VX_Vector(d(rng), d(rng), d(rng)),
                VX_ViewFrustrum());
    VX_Vector p(d(rng), d(rng), d(rng)), q(p), dir(p);
    ASSERT_EQ((S{c.worldToCamPoint(q), c.camToWorldPoint(q), c.worldToCamSpace(dir)}),
              (S{VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE}));
    EXPECT_TRUE(near(q, p, 2e-2f));
    EXPECT_NEAR(dir.vlength(), p.vlength(), 2e-3f * p.vlength());
    // The interest lies straight ahead of the camera.
    VX_Vector i = interestOf(c);
    c.worldToCamPoint(i);
    EXPECT_TRUE(near(VX_Vector(i.x, i.y, 0), VX_Vector(), 2e-2f) && i.z < 0.0f);
  }

  // No transforms for an up vector along the viewing line: 0, the vector unchanged.
  VX_Camera bad(VX_Vector(0, 0, 0), VX_Vector(0, 0, 10), VX_Vector(0, 0, 1), VX_ViewFrustrum());
  VX_Vector v(1, 2, 3);
  EXPECT_EQ((S{bad.camToWorldSpace(v), v == VX_Vector(1, 2, 3), bad.isDirty()}), (S{VX_RET_FALSE, 1, 1}));
}

TEST(Camera, ZoomKeepsItsLimits) {
  VX_Camera cam = standard();
  VX_Camera before = standard();
  EXPECT_EQ((S{cam.zoom(0.0005f), cam == before}), (S{VX_RET_FALSE, 1}));
  struct Case { float delta, distance; } cases[] = {{5, 15}, {-12, 3}, {-50, 1.001f}, {500, 99.999f}};
  for (const Case& c : cases) {
    EXPECT_EQ(cam.zoom(c.delta), VX_RET_TRUE);
    EXPECT_TRUE(near(positionOf(cam), VX_Vector(0, 0, c.distance), 1e-4f) && near(interestOf(cam), VX_Vector(), 1e-6f))
        << c.delta;  // along the same line
  }

  // Orthographic: only the scale moves, never below 0.5, and the transforms stay current.
  VX_Vector any(1, 0, 0);
  cam.camToWorldSpace(any);
  cam.setOrthographic(1);
  VX_ViewFrustrum f;
  EXPECT_EQ((S{cam.zoom(-0.4f), cam.zoom(-0.2f), cam.zoom(2), cam.isDirty()}), (S{1, 1, 1, 0}));
  cam.getFrustrum(f);
  EXPECT_NEAR(f.f3, 2.6f, 1e-6f);
}

TEST(Camera, PanRollAndOrbitMoveAsTheViewerExpects) {
  vxtest::CaptureReporter rep;
  VX_Camera cam = standard();
  VX_Vector up;
  EXPECT_EQ(cam.pan(2, -1), VX_RET_TRUE);
  EXPECT_TRUE(near(positionOf(cam), VX_Vector(2, -1, 10)) && near(interestOf(cam), VX_Vector(2, -1, 0)));

  // Rolling turns the up vector about the viewing line (here +z, towards the camera).
  EXPECT_EQ(cam.roll(kPi / 2), VX_RET_TRUE);
  cam.getUpVector(up);
  EXPECT_TRUE(near(up, VX_Vector(-1, 0, 0)));
  VX_Vector right(1, 0, 0);
  cam.camToWorldSpace(right);
  EXPECT_TRUE(near(right, VX_Vector(0, 1, 0)));
  cam.roll(-kPi / 2);

  // Orbit: the distance stays and the polar angle stops short of either pole.
  EXPECT_EQ((S{cam.orbit(0.0005f, -0.0005f), cam.orbit(kPi / 2, 0)}), (S{VX_RET_FALSE, VX_RET_TRUE}));
  EXPECT_TRUE(near(positionOf(cam), VX_Vector(12, -1, 0)));
  struct Case { float dPhi, phi; } cases[] = {{100, 3.1405928f}, {-100, 0.001f}, {0.5f, 0.501f}};
  for (const Case& c : cases) {
    EXPECT_EQ(cam.orbit(0, c.dPhi), VX_RET_TRUE);
    VX_SphCoord s(positionOf(cam) - interestOf(cam));
    EXPECT_TRUE(std::fabs(s.phi - c.phi) < 1e-4f && std::fabs(s.r - 10.0f) < 1e-3f) << c.dPhi << ": " << s.phi;
  }

  // With the up vector along the viewing line, pan cannot move.
  VX_Camera top(VX_Vector(0, 0, 0), VX_Vector(0, 5, 0), VX_Vector(0, 1, 0), VX_ViewFrustrum(0, 1, 100, 1));
  VX_Camera same(VX_Vector(0, 0, 0), VX_Vector(0, 5, 0), VX_Vector(0, 1, 0), VX_ViewFrustrum(0, 1, 100, 1));
  EXPECT_EQ((S{top.pan(3, 3), top == same}), (S{VX_RET_FALSE, 1}));
  // ... but orbit still moves it off the pole, after which the transforms exist.
  EXPECT_EQ((S{top.orbit(0, 0.5f), top.pan(1, 0)}), (S{VX_RET_TRUE, VX_RET_TRUE}));
  EXPECT_TRUE(rep.reports.empty());
}

TEST(Camera, ComparesPoseDirtyFlagAndMatricesButNotProjection) {
  VX_Camera a = standard(), b = standard();
  b.setOrthographic(1);
  EXPECT_EQ((S{a == b, a == a}), (S{1, 1}));
  VX_Vector v(1, 0, 0);
  // b's transforms are current first, a's pending.
  EXPECT_EQ((S{(b.camToWorldSpace(v), a == b), (a.camToWorldSpace(v), a == b)}), (S{0, 1}));
  VX_CamStruct s;
  a.getCameraStruct(s);
  s.frustum.f0 = 7;
  a.setCameraStruct(s);
  EXPECT_EQ((S{a == b, a.isDirty()}), (S{0, 1}));
  b = a;
  EXPECT_EQ((S{a == b, b.isOrthographic()}), (S{1, 0}));
  VX_Camera d;
  VX_ViewFrustrum f;
  d.getFrustrum(f);
  EXPECT_EQ((S{d.isDirty(), d.isOrthographic(), f == VX_ViewFrustrum(0, 0, 0, 1)}), (S{0, 0, 1}));
}

TEST(Camera, AllocationFailuresDisableTheCameraOrFailTheMove) {
  vxtest::CaptureReporter rep;
  int failures = vxtest::forEachAllocFailure([&](long) {
    VX_Camera c = standard();
    if (c.objIsEnabled()) return;
    VX_Vector v;
    EXPECT_EQ((S{c.zoom(1), c.pan(1, 1), c.roll(1), c.orbit(1, 1), c.camToWorldSpace(v), c.getPosition(v),
                 c.isOrthographic()}),
              (S{6, 6, 6, 6, 6, 6, 6}));
  });
  EXPECT_EQ(failures, 2);

  // Recomputing the transforms and rolling need working matrices.
  failures = vxtest::forEachAllocFailure([&](long) {
    VX_Camera c = standard();
    if (!c.objIsEnabled()) return;
    VX_Vector v(1, 0, 0);
    VX_RET_STATUS st = c.camToWorldSpace(v);
    EXPECT_TRUE(st == VX_RET_TRUE || (st == VX_RET_ERR_MEM && c.isDirty() && v == VX_Vector(1, 0, 0)));
    VX_Vector up;
    st = c.roll(1);
    c.getUpVector(up);
    EXPECT_TRUE(st == VX_RET_TRUE || (st == VX_RET_ERR_MEM && up == VX_Vector(0, 1, 0)));
  });
  EXPECT_GT(failures, 2);
  EXPECT_GT(rep.count(VX_RET_ERR_MEM) + rep.count(VX_RET_ERR_GEN), 0);
}
