#include "pmMath.h"

#include <cmath>

namespace pmMath {

glm::mat3 getTrasformMatrix(glm::vec2 translation, glm::vec2 scale, float angle) {
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    return glm::mat3(glm::vec3(c * scale.x, s * scale.x, 0.0f),
                     glm::vec3(-s * scale.y, c * scale.y, 0.0f),
                     glm::vec3(translation.x, translation.y, 1.0f));
}

}  // namespace pmMath
