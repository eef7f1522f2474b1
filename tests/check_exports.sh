#!/usr/bin/env bash
# Checks that the shared library exports the C entry points and the visible
# layers, and keeps the filter objects and other internals hidden.
set -euo pipefail
lib="$1"
symbols=$(nm -D --defined-only -C "$lib" | awk '{ $1=""; $2=""; print substr($0, 3) }')
fail=0
for name in pmPhotoFilterCreate pmPhotoFilterDelete pmPhotoFilterSetBuffer \
            pmPhotoFilterSetFlipMode pmPhotoFilterDraw PrintLog \
            pmPhotoFilterSetNativeBuffer pmPhotoFilterSetNativeDisplayInfo \
            pmSetEGLDisplay pmEnableInternalGLContext pmDisableInternalGLContext \
            pmBlurFilterCreate pmBlurFilterCreateWithKernelSize pmBlurFilterDelete \
            pmBlurFilterSetBuffer pmBlurFilterSetBufferWithTexture pmBlurFilterSetBufferYUV444 \
            pmBlurFilterSetInputBuffer pmBlurFilterSetOutputBuffer pmBlurFilterSetRenderArea \
            pmBlurFilterSetNativeBuffer pmBlurFilterSetNativeDisplayInfo pmBlurFilterDraw \
            pmBlurFilterSetBlurIntensity pmBlurFilterSetBlurDimming pmBlurFilterSetBlurMixColor \
            pmBlurFilterSetDithering pmBlurFilterSetInterpolation pmBlurFilterSetFlipMode \
            pmBlurFilterSetQuality; do
  if ! grep -qx "$name" <<<"$symbols"; then echo "missing export: $name"; fail=1; fi
done
for prefix in 'pmGL::' 'pmDraw::' 'pmUtil::' 'pmMesh::' 'pmStb::' 'pmImg::' 'pmColor::' 'pmCV::'; do
  if ! grep -q "^$prefix" <<<"$symbols"; then echo "no $prefix function exported"; fail=1; fi
done
if grep -E '^pmFilters::|^stbi_|^stbiw_' <<<"$symbols"; then
  echo "internal symbols exported"; fail=1
fi
[ "$fail" -eq 0 ] && echo "exports ok"
exit "$fail"
