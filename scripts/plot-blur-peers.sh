#!/usr/bin/env bash
# Draws time against sigma for the blur qualities and the peers from the JSON
# of pixmora_bench_blur_peers (photograph rows). Needs gnuplot
# (apt-get install gnuplot-nox) and python3.
#   scripts/plot-blur-peers.sh peers.json docs/blur-peers.png
set -euo pipefail
json="$1"
png="$2"
data=$(mktemp)
trap 'rm -f "$data"' EXIT
python3 "$(dirname "$0")/blur_peers_report.py" "$json" --data > "$data"
gnuplot <<GNUPLOT
set terminal pngcairo size 900,560 font "sans,11"
set output "$png"
set title "Still blur at 1920 x 1080 (upload, blur, read-back), llvmpipe, 2 cores"
set xlabel "Gaussian sigma fitted to the default quality (px)"
set ylabel "ms per picture (median)"
set logscale xy
set key top left
set grid
plot "$data" using 1:2 with linespoints lw 2 title "library, default quality", \
     "$data" using 1:3 with linespoints lw 2 title "library, smooth quality", \
     "$data" using 1:4 with linespoints title "dual-filter pyramid (GLES)", \
     "$data" using 1:5 with linespoints title "full-size separable Gaussian (GLES)", \
     "$data" using 1:6 with linespoints title "OpenCV on the CPU"
GNUPLOT
echo "wrote $png"
