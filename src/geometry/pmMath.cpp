// Matrices, camera, 2D geometry, the integer splitter and the piecewise linear
// mapper.
#include "pmMath.h"

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "pmUtil.h"

namespace pmMath {

namespace {

constexpr float PI = 3.1415927f;
constexpr float TWO_PI = 6.2831855f;
constexpr float DEGREE = 0.017453292f;

}  // namespace

glm::mat4 translate(float x, float y, float z) {
    return glm::translate(glm::mat4(1.0f), glm::vec3(x, y, z));
}

glm::mat4 translate(const glm::vec2& offset) {
    return translate(offset.x, offset.y, 0.0f);
}

glm::mat4 translate(const glm::vec3& offset) {
    return translate(offset.x, offset.y, offset.z);
}

glm::mat4 rotate(float angle, const glm::vec3& axis) {
    return glm::rotate(glm::mat4(1.0f), angle, axis);
}

glm::mat4 rotate(float x, float y, float z, float w) {
    return glm::mat4_cast(glm::qua<float>(w, x, y, z));
}

glm::mat4 rotate(const glm::qua<float>& rotation) {
    return glm::mat4_cast(rotation);
}

glm::mat4 scale(float x, float y, float z) {
    return glm::scale(glm::mat4(1.0f), glm::vec3(x, y, z));
}

glm::mat4 scale(const glm::vec2& factor) {
    return scale(factor.x, factor.y, 1.0f);
}

glm::mat4 scale(const glm::vec3& factor) {
    return scale(factor.x, factor.y, factor.z);
}

glm::mat4 ortho(int width, int height, float near, float far) {
    const float w = static_cast<float>(width);
    const float h = static_cast<float>(height);
    glm::mat4 m(1.0f);
    m[0][0] = 2.0f / w;
    m[1][1] = 2.0f / h;
    m[2][2] = -2.0f / (far - near);
    m[3][0] = -(w + 0.0f) / w;
    m[3][1] = -(0.0f + h) / h;
    m[3][2] = -(near + far) / (far - near);
    return m;
}

void setCamera(Camera& camera, glm::vec3 position, glm::vec3 worldUp, float yaw, float pitch) {
    camera.position = position;
    camera.worldUp = worldUp;
    camera.yaw = yaw;
    camera.pitch = pitch;
    const float y = yaw * DEGREE;
    const float p = pitch * DEGREE;
    camera.front = glm::normalize(
        glm::vec3(std::cos(y) * std::cos(p), std::sin(p), std::sin(y) * std::cos(p)));
    camera.right = glm::normalize(glm::cross(camera.front, camera.worldUp));
    camera.up = glm::normalize(glm::cross(camera.right, camera.front));
}

glm::mat4 getViewMatrix(const Camera& camera) {
    return glm::lookAtRH(camera.position, camera.position + camera.front, camera.up);
}

void setWindowMatrix(MVP& mvp, int width, int height) {
    mvp.projection = ortho(width, height, -1.0f, 1.0f);
}

void setPerspectiveMatrix(MVP& mvp, float fovy, float aspect, float near, float far) {
    // glm refuses this aspect only in builds with assertions; the refusal ends
    // the process in every build here.
    if (!(std::abs(aspect - std::numeric_limits<float>::epsilon()) > 0.0f)) std::abort();
    mvp.projection = glm::perspectiveRH_NO(fovy, aspect, near, far);
}

void setViewMatrix(MVP& mvp, const Camera& camera) {
    mvp.view = getViewMatrix(camera);
}

void lookAt(MVP& mvp, const glm::vec3& eye, const glm::vec3& center, const glm::vec3& up) {
    mvp.view = glm::lookAtRH(eye, center, up);
}

void translate(MVP& mvp, float x, float y, float z) {
    mvp.translation = translate(x, y, z);
}

void translate(MVP& mvp, glm::vec2 offset) {
    mvp.translation = translate(offset);
}

void translate(MVP& mvp, glm::vec3 offset) {
    mvp.translation = translate(offset);
}

void rotate(MVP& mvp, float angle, glm::vec3 axis) {
    mvp.rotation = rotate(angle, axis);
}

void scale(MVP& mvp, float x, float y, float z) {
    mvp.scale = scale(x, y, z);
}

void scale(MVP& mvp, glm::vec2 factor) {
    mvp.scale = scale(factor);
}

void scale(MVP& mvp, glm::vec3 factor) {
    mvp.scale = scale(factor);
}

namespace {

void setShear(MVP& mvp, int kind, float a, float b) {
    mvp.shearKind = kind;
    mvp.shear[0] = a;
    mvp.shear[1] = b;
}

}  // namespace

void shearX(MVP& mvp, float a, float b) {
    setShear(mvp, 1, a, b);
}

void shearY(MVP& mvp, float a, float b) {
    setShear(mvp, 2, a, b);
}

void shearZ(MVP& mvp, float a, float b) {
    setShear(mvp, 3, a, b);
}

glm::mat4 getModelMatrix(const MVP& mvp) {
    const glm::mat4 model = mvp.translation * mvp.rotation * mvp.scale;
    if (mvp.shearKind == 0) return model;
    glm::mat4 shear(1.0f);
    const float a = mvp.shear[0];
    const float b = mvp.shear[1];
    switch (mvp.shearKind) {
        case 1:
            shear[0][1] = a;
            shear[0][2] = b;
            break;
        case 2:
            shear[1][0] = a;
            shear[1][2] = b;
            break;
        case 3:
            shear[2][0] = a;
            shear[2][1] = b;
            break;
        default:
            break;
    }
    return model * shear;
}

glm::mat4 getVPMatrix(const MVP& mvp) {
    return mvp.projection * mvp.view;
}

glm::mat4 getMVPMatrix(const MVP& mvp) {
    return getVPMatrix(mvp) * getModelMatrix(mvp);
}

glm::mat3 getTrasformMatrix(glm::vec2 translation, glm::vec2 scale, float angle) {
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    return glm::mat3(glm::vec3(c * scale.x, s * scale.x, 0.0f),
                     glm::vec3(-s * scale.y, c * scale.y, 0.0f),
                     glm::vec3(translation.x, translation.y, 1.0f));
}

bool getIntersectPoint(glm::vec2 p1, glm::vec2 p2, glm::vec2 p3, glm::vec2 p4, glm::vec2* out) {
    const glm::vec2 d1 = p2 - p1;
    const glm::vec2 d2 = p4 - p3;
    const float denom = d2.y * d1.x - d2.x * d1.y;
    if (denom == 0.0f) return false;
    const glm::vec2 e = p1 - p3;
    const float numA = d2.x * e.y - d2.y * e.x;
    const float ua = numA / denom;
    if (ua < 0.0f || ua > 1.0f) return false;
    const float numB = d1.x * e.y - e.x * d1.y;
    const float ub = numB / denom;
    if (ub < 0.0f || ub > 1.0f) return false;
    if (numA == 0.0f && numB == 0.0f) return false;
    if (out != nullptr) *out = ua * d1 + p1;
    return true;
}

float constrainAngle(float angle) {
    float x = std::fmod(angle + PI, TWO_PI);
    if (x < 0.0f) x += TWO_PI;
    return x - PI;
}

float bisectAngle(float a, float b) {
    return constrainAngle(constrainAngle(b - a) * 0.5f + a);
}

void splitNumber(int number, int* out, int size) {
    PM_ASSERT(size > 0);
    if (size <= 0) return;
    const int base = number / size;
    const int rem = number % size;
    for (int i = 0; i < size; ++i) out[i] = base;
    if (rem < 1) return;
    const int d = size / rem;
    for (int i = 0; i < size; ++i) {
        // Four draws of the C generator, each taken modulo 255, as the bytes
        // of one 32-bit value, lowest byte first.
        std::uint32_t r = 0;
        for (int byte = 0; byte < 4; ++byte) {
            r |= static_cast<std::uint32_t>(std::rand() % 255) << (8 * byte);
        }
        if (static_cast<int>(r % static_cast<std::uint32_t>(d)) + 1 == d) ++out[i];
    }
}

void printMat2(const glm::mat2& m) {
    for (int row = 0; row < 2; ++row) PM_LOGI("%f %f", m[0][row], m[1][row]);
}

void printMat3(const glm::mat3& m) {
    for (int row = 0; row < 3; ++row) PM_LOGI("%f %f %f", m[0][row], m[1][row], m[2][row]);
}

void printMat4(const glm::mat4& m) {
    for (int row = 0; row < 4; ++row) {
        PM_LOGI("%f %f %f %f", m[0][row], m[1][row], m[2][row], m[3][row]);
    }
}

void InoutMapper::PushInout(float output, float input) {
    inoutList.emplace_back(output, input);
}

void InoutMapper::SetInout(const std::vector<std::pair<float, float>>& list) {
    if (&list == &inoutList) return;
    inoutList = list;
}

void InoutMapper::Initialize() {
    if (inoutList.empty()) return;
    std::sort(inoutList.begin(), inoutList.end());
    const float lastOutput = inoutList.back().first;
    // Points whose input equals that of the point before them are dropped;
    // the kept point is compared again with the one after the dropped one.
    for (std::size_t i = 0; i + 1 < inoutList.size();) {
        if (std::fabs(inoutList[i].second - inoutList[i + 1].second) <
            std::numeric_limits<float>::epsilon()) {
            inoutList.erase(inoutList.begin() + static_cast<std::ptrdiff_t>(i) + 1);
        } else {
            ++i;
        }
    }
    inoutList.back().first = lastOutput;
}

float InoutMapper::MapInput(float input) {
    PM_ASSERT(inoutList.empty() == false);
    for (std::size_t i = 0; i + 1 < inoutList.size(); ++i) {
        const std::pair<float, float>& earlier = inoutList[i];
        const std::pair<float, float>& later = inoutList[i + 1];
        if (input >= earlier.second && input <= later.second) {
            const float t = (input - earlier.second) / (later.second - earlier.second);
            return t * later.first + (1.0f - t) * earlier.first;
        }
    }
    return 0.0f;
}

}  // namespace pmMath
