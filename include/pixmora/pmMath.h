/**
 * @file pmMath.h
 * @brief Matrices and small geometric helpers over glm (pmMath).
 *
 * A model-view-projection record, a camera by yaw and pitch, 2D line
 * intersection, angle arithmetic, an integer splitter and a piecewise linear
 * mapper. Matrices are column-major and indexed [column][row]; angles are
 * radians, except the camera's yaw and pitch, which are degrees.
 */
#ifndef PIXMORA_PMMATH_H
#define PIXMORA_PMMATH_H

#include <glm/glm.hpp>
#include <glm/gtc/quaternion.hpp>

#include <utility>
#include <vector>

#include "pmExport.h"

namespace PM_VISIBLE pmMath {

// A model-view-projection made of separate parts. Every setter replaces its
// own part; nothing accumulates. The shear is one kind at a time: 0 none,
// 1 X, 2 Y, 3 Z, with the two factors of that kind.
struct MVP {
    glm::mat4 translation = glm::mat4(1.0f);
    glm::mat4 rotation = glm::mat4(1.0f);
    glm::mat4 scale = glm::mat4(1.0f);
    glm::mat4 view = glm::mat4(1.0f);
    glm::mat4 projection = glm::mat4(1.0f);
    int shearKind = 0;
    float shear[2] = {0.0f, 0.0f};
};

// A camera by position, yaw and pitch (degrees); front, up and right are
// derived by setCamera. The defaults look down -z with y up.
struct Camera {
    glm::vec3 position = glm::vec3(0.0f);
    glm::vec3 front = glm::vec3(0.0f, 0.0f, -1.0f);
    glm::vec3 up = glm::vec3(0.0f, 1.0f, 0.0f);
    glm::vec3 right = glm::vec3(1.0f, 0.0f, 0.0f);
    glm::vec3 worldUp = glm::vec3(0.0f, 1.0f, 0.0f);
    float yaw = -90.0f;
    float pitch = 0.0f;
};

// ---- single transforms
glm::mat4 translate(float x, float y, float z);
glm::mat4 translate(const glm::vec2& offset);  // z 0
glm::mat4 translate(const glm::vec3& offset);
glm::mat4 rotate(float angle, const glm::vec3& axis);
// From a quaternion given as x, y, z, w.
glm::mat4 rotate(float x, float y, float z, float w);
glm::mat4 rotate(const glm::qua<float>& rotation);
glm::mat4 scale(float x, float y, float z);
glm::mat4 scale(const glm::vec2& factor);  // z 1
glm::mat4 scale(const glm::vec3& factor);

// Right-handed orthographic projection that maps x in [0, width] and y in
// [0, height] to [-1, 1], with depth from -1 at `near` to 1 at `far`.
glm::mat4 ortho(int width, int height, float near, float far);

// ---- camera
void setCamera(Camera& camera, glm::vec3 position, glm::vec3 worldUp, float yaw, float pitch);
glm::mat4 getViewMatrix(const Camera& camera);

// ---- model-view-projection
// The projection of a window of pixels: ortho(width, height, -1, 1).
void setWindowMatrix(MVP& mvp, int width, int height);
// Right-handed, depth -1 to 1. An aspect equal to the float epsilon ends the
// process.
void setPerspectiveMatrix(MVP& mvp, float fovy, float aspect, float near, float far);
void setViewMatrix(MVP& mvp, const Camera& camera);
void lookAt(MVP& mvp, const glm::vec3& eye, const glm::vec3& center, const glm::vec3& up);
void translate(MVP& mvp, float x, float y, float z);
void translate(MVP& mvp, glm::vec2 offset);
void translate(MVP& mvp, glm::vec3 offset);
void rotate(MVP& mvp, float angle, glm::vec3 axis);
void scale(MVP& mvp, float x, float y, float z);
void scale(MVP& mvp, glm::vec2 factor);
void scale(MVP& mvp, glm::vec3 factor);
// x' = x + a y + b z (shearX), and likewise for y and z.
void shearX(MVP& mvp, float a, float b);
void shearY(MVP& mvp, float a, float b);
void shearZ(MVP& mvp, float a, float b);
// translation x rotation x scale, times the shear when there is one.
glm::mat4 getModelMatrix(const MVP& mvp);
// projection x view.
glm::mat4 getVPMatrix(const MVP& mvp);
glm::mat4 getMVPMatrix(const MVP& mvp);

// ---- 2D
// Translation x rotation x scale in 2D, as a mat3 acting on (x, y, 1).
glm::mat3 getTrasformMatrix(glm::vec2 translation, glm::vec2 scale, float angle);
// Intersects the segments p1-p2 and p3-p4, end points included. Parallel and
// collinear segments do not meet. `out` may be null.
bool getIntersectPoint(glm::vec2 p1, glm::vec2 p2, glm::vec2 p3, glm::vec2 p4, glm::vec2* out);
// Brings an angle into [-pi, pi); pi itself wraps to -pi.
float constrainAngle(float angle);
// The middle of the shorter way from a to b.
float bisectAngle(float a, float b);
// Every element gets number / size; when there is a remainder, each element
// independently gets one more with a chance of 1 / (size / remainder), so the
// sum is only near `number`.
void splitNumber(int number, int* out, int size);

// Logs a matrix at information level, one line a row.
void printMat2(const glm::mat2& m);
void printMat3(const glm::mat3& m);
void printMat4(const glm::mat4& m);

// A piecewise linear mapping through points of (output, input).
class InoutMapper {
public:
    void PushInout(float output, float input);
    void SetInout(const std::vector<std::pair<float, float>>& list);
    // Sorts the points, drops those with the input of their predecessor and
    // gives the last point the greatest output.
    void Initialize();
    // The output for `input` on the first segment that holds it; 0 outside.
    float MapInput(float input);

    // `first` is the output and `second` the input of a point.
    std::vector<std::pair<float, float>> inoutList;
};

}  // namespace pmMath

#endif
