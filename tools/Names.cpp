#include "Names.h"

#include "ToolError.h"
#include <pixmora/pixmora.h>

namespace {

struct FlipName {
    const char* name;
    int mode;
};

const FlipName kFlipModes[] = {
    {"none", PM_FLIP_NONE}, {"h", PM_FLIP_H}, {"v", PM_FLIP_V}, {"hv", PM_FLIP_HV}};

}  // namespace

const std::vector<EffectName>& effectNames() {
    static const std::vector<EffectName> effects = {
        {"grey", PM_PHOTO_GREY},
        {"sepia", PM_PHOTO_SEPIA},
        {"bloom", PM_PHOTO_BLOOM},
        {"monotonous-blur", PM_PHOTO_MONOTONOUS_BLUR},
        {"cartoon", PM_PHOTO_CARTOON},
        {"chroma", PM_PHOTO_CHROMATIC_DISTORTION},
        {"night-vision", PM_PHOTO_NIGHT_VISION},
        {"cross-stitch", PM_PHOTO_CROSS_STITCHING},
        {"painting", PM_PHOTO_PAINTING},
        {"cross-hatch", PM_PHOTO_CROSS_HATCHING},
    };
    return effects;
}

std::string effectList() {
    std::string names;
    for (const EffectName& effect : effectNames()) {
        if (!names.empty()) names += ", ";
        names += effect.name;
    }
    return names;
}

unsigned effectType(const std::string& name) {
    for (const EffectName& effect : effectNames()) {
        if (name == effect.name) return effect.type;
    }
    throw ToolError("unknown effect '" + name + "' (available: " + effectList() + ")");
}

std::vector<std::string> flipNames() {
    std::vector<std::string> names;
    for (const FlipName& flip : kFlipModes) names.push_back(flip.name);
    return names;
}

int flipMode(const std::string& name) {
    for (const FlipName& flip : kFlipModes) {
        if (name == flip.name) return flip.mode;
    }
    return PM_FLIP_NONE;
}
