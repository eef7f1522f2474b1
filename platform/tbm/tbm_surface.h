/* Desktop stand-in for the device's tbm surface interface: the subset Pixmora
 * uses, backed by ordinary memory with tightly packed rows. */
#ifndef PIXMORA_PLATFORM_TBM_SURFACE_H
#define PIXMORA_PLATFORM_TBM_SURFACE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct _tbm_surface* tbm_surface_h;
typedef uint32_t tbm_format;

#define __tbm_fourcc_code(a, b, c, d) \
    ((uint32_t)(a) | ((uint32_t)(b) << 8) | ((uint32_t)(c) << 16) | ((uint32_t)(d) << 24))

#define TBM_FORMAT_ABGR8888 __tbm_fourcc_code('A', 'B', '2', '4')
#define TBM_FORMAT_RGBA8888 __tbm_fourcc_code('R', 'A', '2', '4')
#define TBM_FORMAT_ARGB8888 __tbm_fourcc_code('A', 'R', '2', '4')
#define TBM_FORMAT_NV12 __tbm_fourcc_code('N', 'V', '1', '2')

#define TBM_SURF_OPTION_READ (1 << 0)
#define TBM_SURF_OPTION_WRITE (1 << 1)

#define TBM_SURF_PLANE_MAX 4

typedef enum {
    TBM_SURFACE_ERROR_NONE = 0,
    TBM_SURFACE_ERROR_INVALID_PARAMETER = -22,
    TBM_SURFACE_ERROR_INVALID_OPERATION = -38
} tbm_surface_error_e;

typedef struct _tbm_surface_plane {
    unsigned char* ptr;
    uint32_t size;
    uint32_t offset;
    uint32_t stride;
    int reserved1;
    int reserved2;
    int reserved3;
} tbm_surface_plane_s;

typedef struct _tbm_surface_info {
    uint32_t width;
    uint32_t height;
    tbm_format format;
    uint32_t bpp;
    uint32_t size;
    uint32_t num_planes;
    tbm_surface_plane_s planes[TBM_SURF_PLANE_MAX];
} tbm_surface_info_s;

tbm_surface_h tbm_surface_create(int width, int height, tbm_format format);
int tbm_surface_destroy(tbm_surface_h surface);
int tbm_surface_get_info(tbm_surface_h surface, tbm_surface_info_s* info);
int tbm_surface_map(tbm_surface_h surface, int opt, tbm_surface_info_s* info);
int tbm_surface_unmap(tbm_surface_h surface);

#ifdef __cplusplus
}
#endif

#endif
