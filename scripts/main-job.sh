#!/usr/bin/env bash
# The main job on a fresh machine: install what is missing, build, and turn a
# real photograph grey and into a soft background with the pixmora tool, blur
# the first seconds of a real clip for a 30 frames a second display, and write
# a gallery of every effect with a strip of the clip's frames, all under out/.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
bash scripts/build.sh
mkdir -p out
photo=/usr/share/backgrounds/mate/nature/Storm.jpg
./build/tools/pixmora effect grey "$photo" out/storm-grey.png
echo "wrote out/storm-grey.png"
./build/tools/pixmora blur "$photo" out/storm-blur.png --intensity 40 --dim 0.8
echo "wrote out/storm-blur.png"

# Debian ships the sample clip as it is or, in some releases, gzip-compressed.
clip=/usr/share/doc/opencv-doc/examples/data/vtest.avi
if [ ! -f "$clip" ] && [ -f "$clip.gz" ]; then
  mkdir -p out/.samples
  gzip -dc "$clip.gz" > out/.samples/vtest.avi
  clip=out/.samples/vtest.avi
fi
# A light blur, so that the walkers stay visible as they cross-fade from frame
# to frame in the gallery's strip.
./build/tools/pixmora video "$clip" out/vtest-blur.avi --blur 4 --render-fps 30 --frames 50
echo "wrote out/vtest-blur.avi"

mkdir -p out/gallery
./build/tools/pixmora gallery "$photo" out/gallery --clip out/vtest-blur.avi
echo "open out/gallery/index.html in a browser to see every effect side by side"
