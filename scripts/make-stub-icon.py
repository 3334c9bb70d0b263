#!/usr/bin/env python3
"""Draws the stub's icon, an archive box with a padlock, and writes it as a Windows .ico with
48, 32 and 16 pixel images of 32 bits. Standard library only.

Usage: scripts/make-stub-icon.py [OUTPUT]   (default frontend/resources/Vomdrel.ico)
"""
import math
import os
import struct
import sys

SIZES = (48, 32, 16)
SAMPLES = 4  # per axis, for smooth edges


def rounded_box(x, y, left, top, right, bottom, radius):
    """True inside a rectangle with rounded corners (unit coordinates)."""
    cx = min(max(x, left + radius), right - radius)
    cy = min(max(y, top + radius), bottom - radius)
    return (x - cx) ** 2 + (y - cy) ** 2 <= radius ** 2 and left <= x <= right and top <= y <= bottom


def shade(x, y):
    """Colour (r, g, b, a) at a point of the unit square, y growing downwards."""
    # Padlock in front: shackle ring, body, keyhole.
    if rounded_box(x, y, 0.50, 0.56, 0.92, 0.93, 0.06):
        keyhole = math.hypot(x - 0.71, y - 0.70) < 0.05 or (abs(x - 0.71) < 0.022 and 0.70 <= y <= 0.82)
        return (40, 40, 48, 255) if keyhole else (232, 178, 36, 255)
    ring = math.hypot(x - 0.71, y - 0.56)
    if 0.10 <= ring <= 0.16 and y <= 0.58:
        return (150, 156, 168, 255)
    # The archive box behind it: lid, body, and a band with a handle slot.
    if rounded_box(x, y, 0.06, 0.12, 0.80, 0.30, 0.04):
        return (120, 78, 38, 255)
    if rounded_box(x, y, 0.10, 0.28, 0.76, 0.86, 0.04):
        if abs(y - 0.42) < 0.035 and 0.30 <= x <= 0.56:
            return (72, 44, 20, 255)
        return (168, 112, 58, 255)
    return (0, 0, 0, 0)


def render(size):
    """Rows of BGRA pixels, top row first, each pixel averaged over SAMPLES^2 points."""
    rows = []
    for py in range(size):
        row = bytearray()
        for px in range(size):
            total = [0, 0, 0, 0]
            for sy in range(SAMPLES):
                for sx in range(SAMPLES):
                    r, g, b, a = shade((px + (sx + 0.5) / SAMPLES) / size,
                                       (py + (sy + 0.5) / SAMPLES) / size)
                    total[0] += r * a
                    total[1] += g * a
                    total[2] += b * a
                    total[3] += a
            alpha = total[3] // (SAMPLES * SAMPLES)
            if total[3]:
                r, g, b = (c // total[3] for c in total[:3])
            else:
                r = g = b = 0
            row += bytes((b, g, r, alpha))
        rows.append(bytes(row))
    return rows


def icon_image(size):
    """One image of an icon file: header, colour rows and mask rows, both bottom-up."""
    rows = render(size)
    mask_stride = ((size + 31) // 32) * 4
    mask = bytearray()
    for row in reversed(rows):
        bits = bytearray(mask_stride)
        for px in range(size):
            if row[px * 4 + 3] == 0:
                bits[px // 8] |= 0x80 >> (px % 8)
        mask += bits
    colour = b"".join(reversed(rows))
    header = struct.pack("<IiiHHIIiiII", 40, size, size * 2, 1, 32, 0, len(colour) + len(mask),
                         0, 0, 0, 0)
    return header + colour + bytes(mask)


def icon_file():
    images = [icon_image(size) for size in SIZES]
    out = struct.pack("<HHH", 0, 1, len(images))
    offset = 6 + 16 * len(images)
    for size, image in zip(SIZES, images):
        out += struct.pack("<BBBBHHII", size, size, 0, 0, 1, 32, len(image), offset)
        offset += len(image)
    return out + b"".join(images)


def main():
    root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    target = sys.argv[1] if len(sys.argv) > 1 else os.path.join(root, "frontend", "resources",
                                                                "Vomdrel.ico")
    with open(target, "wb") as stream:
        stream.write(icon_file())


if __name__ == "__main__":
    main()
