// pmMath: small 2D and 3D helpers over glm.
#ifndef PIXMORA_PMMATH_H
#define PIXMORA_PMMATH_H

#include <glm/glm.hpp>

#include "pmExport.h"

namespace PM_VISIBLE pmMath {

// Translation x rotation x scale in 2D, as a mat3 acting on (x, y, 1).
glm::mat3 getTrasformMatrix(glm::vec2 translation, glm::vec2 scale, float angle);

}  // namespace pmMath

#endif
