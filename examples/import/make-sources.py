#!/usr/bin/env python3
"""Draws the sources of the import examples as binary PPM files in DIR:
  waterfall.ppm, waterfall-map.ppm  a cliff with a waterfall, a river and
                                    embers, and its 64 colours in palette
                                    order (the colour ranges need them in order)
  ball-N.ppm                        12 frames of a bouncing ball
Usage: make-sources.py DIR"""
import math
import os
import sys

out = sys.argv[1]


def ppm(name, w, h, pixels):
    with open(os.path.join(out, name), "wb") as f:
        f.write(b"P6\n%d %d\n255\n" % (w, h))
        f.write(bytes(c for p in pixels for c in p))


# Palette: 0-15 sky, 16-23 rock, 24-39 waterfall (cycles), 40-47 river
# (cycles backward), 48-55 embers (cycle), 56-63 stars (a range left off).
pal = []
pal += [(20 + i * 6, 40 + i * 8, 90 + i * 9) for i in range(16)]
pal += [(60 + i * 12, 45 + i * 9, 35 + i * 6) for i in range(8)]
pal += [(30 + i * 2, 90 + min(i, 16 - i) * 18, 200 + min(i, 16 - i) * 6) for i in range(16)]
pal += [(20 + i * 10, 60 + i * 14, 140 + i * 12) for i in range(8)]
pal += [(255, 60 + i * 24, i * 8) for i in range(8)]
pal += [(255 - i * 20, 255 - i * 20, 200 + i * 5) for i in range(8)]
assert len(set(pal)) == 64  # ppmtoilbm would merge equal colours
ppm("waterfall-map.ppm", 64, 1, pal)

W, H = 160, 100
pix = []
for y in range(H):
    for x in range(W):
        if 56 <= x < 84 and 20 <= y < 82:
            c = 24 + (y - x // 3) % 16           # falling water
        elif y >= 82:
            c = 40 + (x // 3 + y) % 8            # river
        elif (x < 56 or x >= 84) and y >= 20 + abs(x - 70) // 6:
            c = 16 + (x * 7 + y * 3) // 11 % 8   # rock
            if 108 <= x < 140 and 60 <= y < 70:
                c = 48 + (x + y * 2) % 8         # embers of a fire on the ledge
        else:
            c = y * 16 // 30 if y < 30 else 15   # sky
            if (x * 31 + y * 17) % 97 == 0:
                c = 56 + (x + y) % 8             # stars
        pix.append(pal[c])
ppm("waterfall.ppm", W, H, pix)

for k in range(12):
    t = k / 12
    bx = 8 + int(t * 48)
    by = 40 - int(36 * abs(math.sin(t * math.pi * 2)))
    frame = []
    for y in range(56):
        for x in range(72):
            if (x - bx - 6) ** 2 + (y - by - 6) ** 2 <= 36:
                frame.append((230, 60 + k * 10, 40))
            elif y >= 52:
                frame.append((70, 140, 60))
            else:
                frame.append((230, 236, 245))
    ppm("ball-%d.ppm" % k, 72, 56, frame)
