/* Surfaces in ordinary memory: 32-bit RGBA-family formats as one plane of
 * width * 4 bytes a row, NV12 as a luma plane and a half-height chroma plane. */
#include "tbm_surface.h"

#include <stdlib.h>
#include <string.h>

struct _tbm_surface {
    tbm_surface_info_s info;
    unsigned char* memory;
    int mapped;
};

static int isFourByteFormat(tbm_format format) {
    return format == TBM_FORMAT_ABGR8888 || format == TBM_FORMAT_RGBA8888 ||
           format == TBM_FORMAT_ARGB8888;
}

static void describePlanes(tbm_surface_info_s* info) {
    const uint32_t w = info->width, h = info->height;
    if (info->format == TBM_FORMAT_NV12) {
        info->bpp = 12;
        info->num_planes = 2;
        info->planes[0].stride = w;
        info->planes[0].size = w * h;
        info->planes[1].offset = w * h;
        info->planes[1].stride = w;
        info->planes[1].size = w * ((h + 1) / 2);
    } else {
        info->bpp = 32;
        info->num_planes = 1;
        info->planes[0].stride = w * 4;
        info->planes[0].size = w * h * 4;
    }
    info->size = info->planes[0].size + info->planes[1].size;
}

tbm_surface_h tbm_surface_create(int width, int height, tbm_format format) {
    if (width < 0 || height < 0) return NULL;
    if (!isFourByteFormat(format) && format != TBM_FORMAT_NV12) return NULL;
    struct _tbm_surface* surface = calloc(1, sizeof(*surface));
    if (!surface) return NULL;
    surface->info.width = (uint32_t)width;
    surface->info.height = (uint32_t)height;
    surface->info.format = format;
    describePlanes(&surface->info);
    /* One spare byte so that even an empty surface has real memory behind it. */
    surface->memory = calloc(1, (size_t)surface->info.size + 1);
    if (!surface->memory) {
        free(surface);
        return NULL;
    }
    for (uint32_t i = 0; i < surface->info.num_planes; ++i) {
        surface->info.planes[i].ptr = surface->memory + surface->info.planes[i].offset;
    }
    return surface;
}

int tbm_surface_destroy(tbm_surface_h surface) {
    if (!surface) return TBM_SURFACE_ERROR_INVALID_PARAMETER;
    free(surface->memory);
    free(surface);
    return TBM_SURFACE_ERROR_NONE;
}

int tbm_surface_get_info(tbm_surface_h surface, tbm_surface_info_s* info) {
    if (!surface || !info) return TBM_SURFACE_ERROR_INVALID_PARAMETER;
    *info = surface->info;
    return TBM_SURFACE_ERROR_NONE;
}

int tbm_surface_map(tbm_surface_h surface, int opt, tbm_surface_info_s* info) {
    if (!surface || !info) return TBM_SURFACE_ERROR_INVALID_PARAMETER;
    if ((opt & (TBM_SURF_OPTION_READ | TBM_SURF_OPTION_WRITE)) == 0) {
        return TBM_SURFACE_ERROR_INVALID_PARAMETER;
    }
    surface->mapped++;
    *info = surface->info;
    return TBM_SURFACE_ERROR_NONE;
}

int tbm_surface_unmap(tbm_surface_h surface) {
    if (!surface) return TBM_SURFACE_ERROR_INVALID_PARAMETER;
    if (surface->mapped == 0) return TBM_SURFACE_ERROR_INVALID_OPERATION;
    surface->mapped--;
    return TBM_SURFACE_ERROR_NONE;
}
