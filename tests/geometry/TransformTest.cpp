// Matrices of pmMath against glm and against values worked out by hand.
#include <gtest/gtest.h>

#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtc/quaternion.hpp>

#include <cmath>
#include <limits>
#include <string>

#include "GeometryTestHelpers.h"
#include "LogCapture.h"
#include "pmMath.h"

using geotest::matNear;
using geotest::vecNear;

namespace {

const float HALF_PI = 1.5707964f;

glm::vec4 apply(const glm::mat4& m, float x, float y, float z) {
    return m * glm::vec4(x, y, z, 1.0f);
}

TEST(SingleTransforms, TranslateInItsThreeForms) {
    const glm::mat4 expected = glm::translate(glm::mat4(1.0f), glm::vec3(1.0f, -2.0f, 3.0f));
    EXPECT_TRUE(matNear(pmMath::translate(1.0f, -2.0f, 3.0f), expected, 0.0f));
    EXPECT_TRUE(matNear(pmMath::translate(glm::vec3(1.0f, -2.0f, 3.0f)), expected, 0.0f));
    // The vec2 form leaves z at 0.
    glm::mat4 flat(1.0f);
    flat[3] = glm::vec4(1.0f, -2.0f, 0.0f, 1.0f);
    EXPECT_TRUE(matNear(pmMath::translate(glm::vec2(1.0f, -2.0f)), flat, 0.0f));
}

TEST(SingleTransforms, ScaleInItsThreeForms) {
    glm::mat4 expected(1.0f);
    expected[0][0] = 2.0f;
    expected[1][1] = 3.0f;
    expected[2][2] = 4.0f;
    EXPECT_TRUE(matNear(pmMath::scale(2.0f, 3.0f, 4.0f), expected, 0.0f));
    EXPECT_TRUE(matNear(pmMath::scale(glm::vec3(2.0f, 3.0f, 4.0f)), expected, 0.0f));
    // The vec2 form keeps z at 1.
    expected[2][2] = 1.0f;
    EXPECT_TRUE(matNear(pmMath::scale(glm::vec2(2.0f, 3.0f)), expected, 0.0f));
}

TEST(SingleTransforms, RotateByAxisAndByQuaternion) {
    // A quarter turn about z takes x to y and y to -x.
    glm::mat4 quarter(1.0f);
    quarter[0] = glm::vec4(0.0f, 1.0f, 0.0f, 0.0f);
    quarter[1] = glm::vec4(-1.0f, 0.0f, 0.0f, 0.0f);
    EXPECT_TRUE(matNear(pmMath::rotate(HALF_PI, glm::vec3(0.0f, 0.0f, 1.0f)), quarter));
    const glm::vec3 axis = glm::normalize(glm::vec3(1.0f, 2.0f, 3.0f));
    EXPECT_TRUE(matNear(pmMath::rotate(0.7f, axis), glm::rotate(glm::mat4(1.0f), 0.7f, axis)));

    // The quaternion of a quarter turn about z, given as x, y, z, w.
    const float h = std::sqrt(0.5f);
    EXPECT_TRUE(matNear(pmMath::rotate(0.0f, 0.0f, h, h), quarter));
    EXPECT_TRUE(
        matNear(pmMath::rotate(glm::angleAxis(HALF_PI, glm::vec3(0.0f, 0.0f, 1.0f))), quarter));
    const glm::qua<float> q = glm::angleAxis(0.7f, axis);
    EXPECT_TRUE(
        matNear(pmMath::rotate(q.x, q.y, q.z, q.w), glm::rotate(glm::mat4(1.0f), 0.7f, axis)));
}

TEST(Ortho, EntriesAndCorners) {
    const glm::mat4 m = pmMath::ortho(200, 100, 0.5f, 4.5f);
    glm::mat4 expected(1.0f);
    expected[0][0] = 2.0f / 200.0f;
    expected[1][1] = 2.0f / 100.0f;
    expected[2][2] = -2.0f / 4.0f;
    expected[3][0] = -1.0f;
    expected[3][1] = -1.0f;
    expected[3][2] = -5.0f / 4.0f;
    EXPECT_TRUE(matNear(m, expected, 1e-7f));
    EXPECT_TRUE(matNear(m, glm::ortho(0.0f, 200.0f, 0.0f, 100.0f, 0.5f, 4.5f), 1e-6f));
    EXPECT_TRUE(vecNear(apply(m, 0.0f, 0.0f, -0.5f), glm::vec4(-1.0f, -1.0f, -1.0f, 1.0f)));
    EXPECT_TRUE(vecNear(apply(m, 200.0f, 100.0f, -4.5f), glm::vec4(1.0f, 1.0f, 1.0f, 1.0f)));
}

TEST(MVPRecord, StartsAsIdentityWithNoShear) {
    const pmMath::MVP mvp;
    EXPECT_TRUE(matNear(pmMath::getMVPMatrix(mvp), glm::mat4(1.0f), 0.0f));
    EXPECT_EQ(mvp.shearKind, 0);
}

TEST(MVPRecord, WindowMatrixIsTheOrthoOfThePixels) {
    pmMath::MVP mvp;
    pmMath::setWindowMatrix(mvp, 640, 480);
    EXPECT_TRUE(matNear(mvp.projection, pmMath::ortho(640, 480, -1.0f, 1.0f), 0.0f));
    // z is untouched between -1 and 1: [2][2] is -1 and [3][2] 0.
    EXPECT_FLOAT_EQ(mvp.projection[2][2], -1.0f);
    EXPECT_FLOAT_EQ(mvp.projection[3][2], 0.0f);
    EXPECT_TRUE(matNear(mvp.view, glm::mat4(1.0f), 0.0f));
}

TEST(MVPRecord, PerspectiveIsRightHandedWithDepthMinusOneToOne) {
    pmMath::MVP mvp;
    const float fov = 1.0f;
    const float aspect = 1.5f;
    const float near = 0.5f;
    const float far = 10.0f;
    pmMath::setPerspectiveMatrix(mvp, fov, aspect, near, far);
    const float f = 1.0f / std::tan(fov / 2.0f);
    glm::mat4 expected(0.0f);
    expected[0][0] = f / aspect;
    expected[1][1] = f;
    expected[2][2] = -(far + near) / (far - near);
    expected[2][3] = -1.0f;
    expected[3][2] = -2.0f * far * near / (far - near);
    EXPECT_TRUE(matNear(mvp.projection, expected, 1e-5f));
    // The near plane maps to -1 and the far plane to 1.
    const glm::vec4 n = apply(mvp.projection, 0.0f, 0.0f, -near);
    const glm::vec4 r = apply(mvp.projection, 0.0f, 0.0f, -far);
    EXPECT_NEAR(n.z / n.w, -1.0f, 1e-5f);
    EXPECT_NEAR(r.z / r.w, 1.0f, 1e-5f);
}

TEST(MVPRecordDeathTest, AspectOfTheFloatEpsilonEndsTheProcess) {
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    pmMath::MVP mvp;
    EXPECT_DEATH(
        pmMath::setPerspectiveMatrix(mvp, 1.0f, std::numeric_limits<float>::epsilon(), 0.1f, 10.0f),
        "");
}

TEST(Camera, YawAndPitchGiveTheAxes) {
    pmMath::Camera camera;
    pmMath::setCamera(camera, glm::vec3(1.0f, 2.0f, 3.0f), glm::vec3(0.0f, 1.0f, 0.0f), -90.0f,
                      0.0f);
    EXPECT_TRUE(vecNear(camera.position, glm::vec3(1.0f, 2.0f, 3.0f)));
    EXPECT_TRUE(vecNear(camera.worldUp, glm::vec3(0.0f, 1.0f, 0.0f)));
    EXPECT_FLOAT_EQ(camera.yaw, -90.0f);
    EXPECT_FLOAT_EQ(camera.pitch, 0.0f);
    EXPECT_TRUE(vecNear(camera.front, glm::vec3(0.0f, 0.0f, -1.0f)));
    EXPECT_TRUE(vecNear(camera.right, glm::vec3(1.0f, 0.0f, 0.0f)));
    EXPECT_TRUE(vecNear(camera.up, glm::vec3(0.0f, 1.0f, 0.0f)));

    // Yaw 0 and pitch 45 degrees: front along (1, 1, 0), right along z, up
    // along (-1, 1, 0).
    pmMath::setCamera(camera, glm::vec3(0.0f), glm::vec3(0.0f, 1.0f, 0.0f), 0.0f, 45.0f);
    const float h = std::sqrt(0.5f);
    EXPECT_TRUE(vecNear(camera.front, glm::vec3(h, h, 0.0f)));
    EXPECT_TRUE(vecNear(camera.right, glm::vec3(0.0f, 0.0f, 1.0f)));
    EXPECT_TRUE(vecNear(camera.up, glm::vec3(-h, h, 0.0f)));
}

TEST(Camera, ViewMatrixLooksAlongFront) {
    pmMath::Camera camera;
    pmMath::setCamera(camera, glm::vec3(0.0f, 0.0f, 5.0f), glm::vec3(0.0f, 1.0f, 0.0f), -90.0f,
                      0.0f);
    const glm::mat4 view = pmMath::getViewMatrix(camera);
    // The origin is 5 in front of the camera, on its -z axis.
    EXPECT_TRUE(vecNear(apply(view, 0.0f, 0.0f, 0.0f), glm::vec4(0.0f, 0.0f, -5.0f, 1.0f)));
    EXPECT_TRUE(vecNear(apply(view, 1.0f, 2.0f, 5.0f), glm::vec4(1.0f, 2.0f, 0.0f, 1.0f)));

    pmMath::setCamera(camera, glm::vec3(1.0f, -2.0f, 0.5f), glm::vec3(0.0f, 1.0f, 0.0f), 30.0f,
                      -20.0f);
    const glm::mat4 expected =
        glm::lookAt(camera.position, camera.position + camera.front, camera.up);
    EXPECT_TRUE(matNear(pmMath::getViewMatrix(camera), expected));

    pmMath::MVP mvp;
    pmMath::setViewMatrix(mvp, camera);
    EXPECT_TRUE(matNear(mvp.view, expected));
}

TEST(MVPRecord, LookAtSetsTheView) {
    pmMath::MVP mvp;
    const glm::vec3 eye(3.0f, 4.0f, 5.0f);
    const glm::vec3 center(0.0f, 1.0f, 0.0f);
    const glm::vec3 up(0.0f, 1.0f, 0.0f);
    pmMath::lookAt(mvp, eye, center, up);
    EXPECT_TRUE(matNear(mvp.view, glm::lookAt(eye, center, up)));
    // The eye goes to the origin and the centre onto the -z axis.
    EXPECT_TRUE(vecNear(apply(mvp.view, eye.x, eye.y, eye.z), glm::vec4(0.0f, 0.0f, 0.0f, 1.0f)));
    const glm::vec4 c = apply(mvp.view, center.x, center.y, center.z);
    EXPECT_NEAR(c.x, 0.0f, 1e-5f);
    EXPECT_NEAR(c.y, 0.0f, 1e-5f);
    EXPECT_NEAR(c.z, -glm::length(eye - center), 1e-5f);
}

TEST(MVPRecord, SettersReplaceTheirPartAndModelIsTranslationRotationScale) {
    pmMath::MVP mvp;
    pmMath::translate(mvp, 9.0f, 9.0f, 9.0f);
    pmMath::translate(mvp, glm::vec2(1.0f, 0.0f));
    EXPECT_TRUE(matNear(mvp.translation, pmMath::translate(1.0f, 0.0f, 0.0f), 0.0f));
    pmMath::translate(mvp, glm::vec3(1.0f, 0.0f, 0.5f));
    pmMath::scale(mvp, 5.0f, 5.0f, 5.0f);
    pmMath::scale(mvp, glm::vec3(2.0f, 2.0f, 2.0f));
    pmMath::scale(mvp, glm::vec2(2.0f, 2.0f));
    EXPECT_TRUE(matNear(mvp.scale, pmMath::scale(2.0f, 2.0f, 1.0f), 0.0f));
    pmMath::rotate(mvp, HALF_PI, glm::vec3(0.0f, 0.0f, 1.0f));
    // (1, 0, 0) scaled to (2, 0, 0), turned to (0, 2, 0), moved to (1, 2, 0.5).
    const glm::mat4 model = pmMath::getModelMatrix(mvp);
    EXPECT_TRUE(vecNear(apply(model, 1.0f, 0.0f, 0.0f), glm::vec4(1.0f, 2.0f, 0.5f, 1.0f)));
    EXPECT_TRUE(matNear(model, mvp.translation * mvp.rotation * mvp.scale, 0.0f));
}

TEST(MVPRecord, ShearEntriesAndOrder) {
    pmMath::MVP mvp;
    pmMath::translate(mvp, 1.0f, 2.0f, 3.0f);
    pmMath::shearX(mvp, 0.5f, 0.25f);
    EXPECT_EQ(mvp.shearKind, 1);
    glm::mat4 shear(1.0f);
    shear[0][1] = 0.5f;
    shear[0][2] = 0.25f;
    EXPECT_TRUE(matNear(pmMath::getModelMatrix(mvp), mvp.translation * shear, 0.0f));
    // Applied first, before the translation: (2, 0, 0) -> (2, 1, 0.5) -> + (1, 2, 3).
    EXPECT_TRUE(vecNear(apply(pmMath::getModelMatrix(mvp), 2.0f, 0.0f, 0.0f),
                        glm::vec4(3.0f, 3.0f, 3.5f, 1.0f)));

    // A new kind drops the factors of the old: one kind at a time.
    pmMath::shearY(mvp, 0.75f, -1.0f);
    EXPECT_EQ(mvp.shearKind, 2);
    shear = glm::mat4(1.0f);
    shear[1][0] = 0.75f;
    shear[1][2] = -1.0f;
    EXPECT_TRUE(matNear(pmMath::getModelMatrix(mvp), mvp.translation * shear, 0.0f));

    pmMath::shearZ(mvp, 2.0f, 3.0f);
    EXPECT_EQ(mvp.shearKind, 3);
    shear = glm::mat4(1.0f);
    shear[2][0] = 2.0f;
    shear[2][1] = 3.0f;
    EXPECT_TRUE(matNear(pmMath::getModelMatrix(mvp), mvp.translation * shear, 0.0f));
}

TEST(MVPRecord, ViewProjectionAndFullProduct) {
    pmMath::MVP mvp;
    pmMath::setWindowMatrix(mvp, 100, 50);
    pmMath::lookAt(mvp, glm::vec3(0.0f, 0.0f, 1.0f), glm::vec3(0.0f), glm::vec3(0.0f, 1.0f, 0.0f));
    pmMath::translate(mvp, 10.0f, 20.0f, 0.0f);
    pmMath::scale(mvp, 3.0f, 3.0f, 1.0f);
    pmMath::shearX(mvp, 0.5f, 0.0f);
    const glm::mat4 vp = mvp.projection * mvp.view;
    EXPECT_TRUE(matNear(pmMath::getVPMatrix(mvp), vp, 0.0f));
    EXPECT_TRUE(matNear(pmMath::getMVPMatrix(mvp), vp * pmMath::getModelMatrix(mvp), 1e-6f));
    // A pixel point: (1, 0) sheared to (1, 0.5), scaled to (3, 1.5), moved to
    // (13, 21.5), then mapped to the window and moved back one along z.
    const glm::vec4 clip = apply(pmMath::getMVPMatrix(mvp), 1.0f, 0.0f, 0.0f);
    EXPECT_TRUE(vecNear(clip, glm::vec4(13.0f / 50.0f - 1.0f, 21.5f / 25.0f - 1.0f, 1.0f, 1.0f)));
}

TEST(TransformMatrix2D, ColumnsAreTranslationRotationScale) {
    const float angle = 0.6f;
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    const glm::mat3 m =
        pmMath::getTrasformMatrix(glm::vec2(3.0f, -1.0f), glm::vec2(2.0f, 0.5f), angle);
    const glm::mat3 expected(glm::vec3(c * 2.0f, s * 2.0f, 0.0f),
                             glm::vec3(-s * 0.5f, c * 0.5f, 0.0f), glm::vec3(3.0f, -1.0f, 1.0f));
    EXPECT_TRUE(matNear(m, expected, 0.0f));
    // (1, 1) scaled to (2, 0.5), turned, then moved.
    const glm::vec3 p = m * glm::vec3(1.0f, 1.0f, 1.0f);
    EXPECT_TRUE(
        vecNear(p, glm::vec3(2.0f * c - 0.5f * s + 3.0f, 2.0f * s + 0.5f * c - 1.0f, 1.0f)));
}

TEST(MatrixPrinters, OneInformationLinePerRow) {
    LogCapture log;
    pmMath::printMat2(glm::mat2(1.0f, 2.0f, 3.0f, 4.0f));
    ASSERT_EQ(log.lines().size(), 2u) << log.dump();
    EXPECT_EQ(log.lines()[0].priority, 4);
    EXPECT_EQ(log.lines()[0].tag, "Pixmora");
    const std::string first = log.lines()[0].text;
    EXPECT_EQ(first.rfind("pmMath: printMat2(", 0), 0u) << first;
    EXPECT_EQ(log.countEndingWith(") > 1.000000 3.000000"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> 2.000000 4.000000"), 1) << log.dump();
    EXPECT_NE(log.lines()[0].format.find("%f %f"), std::string::npos);

    log.clear();
    glm::mat3 m3(1.0f);
    m3[2][0] = 5.0f;
    pmMath::printMat3(m3);
    ASSERT_EQ(log.lines().size(), 3u);
    EXPECT_EQ(log.countEndingWith("> 1.000000 0.000000 5.000000"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> 0.000000 0.000000 1.000000"), 1) << log.dump();

    log.clear();
    glm::mat4 m4(1.0f);
    m4[3] = glm::vec4(7.0f, 8.0f, 9.0f, 1.0f);
    pmMath::printMat4(m4);
    ASSERT_EQ(log.lines().size(), 4u);
    for (const LogLine& line : log.lines()) EXPECT_EQ(line.priority, 4);
    EXPECT_EQ(log.countEndingWith("> 1.000000 0.000000 0.000000 7.000000"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> 0.000000 0.000000 1.000000 9.000000"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> 0.000000 0.000000 0.000000 1.000000"), 1) << log.dump();
}

}  // namespace
