#!/usr/bin/env python3
"""Tables and chart data from the JSON of pixmora_bench_blur_peers.

  scripts/blur_peers_report.py peers.json            # Markdown tables
  scripts/blur_peers_report.py peers.json --data     # columns for gnuplot
"""
import json
import sys

CONTENDERS = ["default", "smooth", "pyramid", "gauss", "cpu"]


def rows(path):
    for bench in json.load(open(path))["benchmarks"]:
        parts = bench["name"].split("/")
        yield parts[1], int(parts[2]), bench


def markdown(path):
    print("| picture | intensity | sigma px | default ms | smooth ms | pyramid ms | "
          "full Gaussian ms | OpenCV CPU ms | pyramid / smooth | copy ms |")
    print("|---|---|---|---|---|---|---|---|---|---|")
    for picture, intensity, b in rows(path):
        print(f"| {picture} | {intensity} | {b['sigma']:.1f} | {b['default_ms']:.1f} | "
              f"{b['smooth_ms']:.1f} | {b['pyramid_ms']:.1f} | {b['gauss_ms']:.0f} | "
              f"{b['cpu_ms']:.1f} | {b['pyramid_x_smooth']:.2f} | {b['copy_ms']:.1f} |")
    print()
    print("| picture | intensity | SSIM default | smooth | pyramid | full Gaussian | OpenCV | "
          "planned sigma px | smooth fits px |")
    print("|---|---|---|---|---|---|---|---|---|")
    for picture, intensity, b in rows(path):
        cells = " | ".join(f"{b[c + '_ssim']:.4f}" for c in CONTENDERS)
        # Marked when the default's or the smooth fit ended at its search range:
        # then its reference measured something else than the blur.
        mark = " (range end)" if b.get("fit_at_range_end") else ""
        print(f"| {picture} | {intensity} | {cells} | {b['planned_sigma']:.1f} | "
              f"{b['smooth_fit_sigma']:.1f}{mark} |")
    print()
    print("| picture | intensity | grid line (period px): default | smooth | pyramid | "
          "full Gaussian | OpenCV |")
    print("|---|---|---|---|---|---|---|")
    for picture, intensity, b in rows(path):
        cells = " | ".join(f"{b[c + '_grid']:.1f} ({b[c + '_period']:.0f})" for c in CONTENDERS)
        print(f"| {picture} | {intensity} | {cells} |")


def data(path):
    print("# picture sigma " + " ".join(CONTENDERS))
    for picture, intensity, b in rows(path):
        if picture != "photo":
            continue
        print(f"{b['sigma']:.3f} " + " ".join(f"{b[c + '_ms']:.3f}" for c in CONTENDERS))


if __name__ == "__main__":
    (data if "--data" in sys.argv else markdown)(sys.argv[1])
