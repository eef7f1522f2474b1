#!/usr/bin/env bash
# The main job on a fresh machine: install what is missing, build, and turn a
# real photograph grey and into a soft background with the pixmora tool, and
# write a gallery of every effect, all under out/.
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
mkdir -p out/gallery
./build/tools/pixmora gallery "$photo" out/gallery
echo "open out/gallery/index.html in a browser to see every effect side by side"
