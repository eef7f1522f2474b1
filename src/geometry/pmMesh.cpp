#include "pmMesh.h"

#include "pmMath.h"

namespace pmMesh {

namespace {

pmGL::VertexAttribute floatAttribute(int size, int stride, std::uintptr_t offset,
                                     const char* name) {
    pmGL::VertexAttribute attribute;
    attribute.type = GL_FLOAT;
    attribute.size = size;
    attribute.normalized = false;
    attribute.stride = stride;
    attribute.offset = offset;
    attribute.name = name;
    return attribute;
}

}  // namespace

const std::vector<pmGL::VertexAttribute> PositionVertex::defaultAttribs = {
    floatAttribute(3, 12, 0, "aPosition")};

const std::vector<pmGL::VertexAttribute> TexturingVertex::defaultAttribs = {
    floatAttribute(3, 20, 0, "aPosition"), floatAttribute(2, 20, 12, "aTexCoord")};

void createQuad(std::vector<glm::vec2>& positions, const glm::vec2& min, const glm::vec2& max) {
    positions = {{min.x, min.y}, {max.x, min.y}, {min.x, max.y}, {max.x, max.y}};
}

void mapTexCoord(std::vector<glm::vec2>& out, const std::vector<glm::vec2>& positions,
                 const glm::vec2& translation, const glm::vec2& scale, float angle) {
    const glm::mat3 m = pmMath::getTrasformMatrix(translation, scale, angle);
    out.clear();
    out.reserve(positions.size());
    for (const glm::vec2& p : positions) out.push_back(glm::vec2(m * glm::vec3(p, 1.0f)));
}

void mapTexCoord(std::vector<glm::vec2>& out, const std::vector<glm::vec2>& positions,
                 const glm::vec2& translation, const glm::vec2& scale, float angle,
                 const glm::vec2& pivot) {
    const glm::mat3 m = pmMath::getTrasformMatrix(translation, scale, angle);
    out.clear();
    out.reserve(positions.size());
    for (const glm::vec2& p : positions) {
        out.push_back(glm::vec2(m * glm::vec3(p - pivot, 1.0f)) + pivot);
    }
}

void createQuad(pmGL::TriangleStripMesh<PositionVertex>& mesh, const glm::vec2& min,
                const glm::vec2& max) {
    std::vector<glm::vec2> positions;
    createQuad(positions, min, max);
    mesh.vertices.clear();
    for (const glm::vec2& p : positions) mesh.vertices.push_back({glm::vec3(p, 0.0f)});
    mesh.attributes = PositionVertex::defaultAttribs;
}

void createQuad(pmGL::TriangleStripMesh<TexturingVertex>& mesh, const glm::vec2& min,
                const glm::vec2& max, float angle, const glm::vec2& translation,
                const glm::vec2& scale) {
    std::vector<glm::vec2> positions;
    std::vector<glm::vec2> texCoords;
    createQuad(positions, min, max);
    const glm::vec2 centre = (min + max) * 0.5f;
    mapTexCoord(texCoords, positions, translation - centre, scale / (max - min), angle, centre);
    mesh.vertices.clear();
    for (size_t i = 0; i < positions.size(); ++i) {
        mesh.vertices.push_back({glm::vec3(positions[i], 0.0f), texCoords[i]});
    }
    mesh.attributes = TexturingVertex::defaultAttribs;
}

}  // namespace pmMesh
