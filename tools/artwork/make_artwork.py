#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
# SPDX-License-Identifier: Apache-2.0

"""Draws the onboarding artwork of the companion window into bundle/artwork/.

    /usr/bin/python3 tools/artwork/make_artwork.py [output-directory]

Needs Pillow (Debian: python3-pil) and the DejaVu fonts (fonts-dejavu-core). The
output is deterministic: the same script with the same Pillow and fonts writes
byte-identical files, so regenerating shows no diff unless the drawing changed.

Everything is drawn at SS times its final size and reduced with a Lanczos filter,
which gives smooth edges without relying on the drawing library's anti-aliasing.
Coordinates are in final pixels (for the animations: pixels of the 464 x 536
reference, shown at half size in the window).
"""

import math
import os
import sys
from dataclasses import dataclass

from PIL import Image, ImageChops, ImageDraw, ImageFilter, ImageFont

SS = 4

FONT_DIR = "/usr/share/fonts/truetype/dejavu"
FONT_REGULAR = os.path.join(FONT_DIR, "DejaVuSans.ttf")
FONT_BOLD = os.path.join(FONT_DIR, "DejaVuSans-Bold.ttf")

# The brand gradient of the application icon (data/com.lexmira.companion.svg).
BRAND_TOP = 0x2F80FF
BRAND_BOTTOM = 0x1455C8
WHITE = 0xFFFFFF


def rgba(colour, alpha=1.0):
    """A 0xRRGGBB integer (or an RGBA tuple) as an RGBA tuple, with alpha in 0..1."""
    if isinstance(colour, tuple):
        return colour if len(colour) == 4 else colour + (round(255 * alpha),)
    return ((colour >> 16) & 0xFF, (colour >> 8) & 0xFF, colour & 0xFF, round(255 * alpha))


def mix(a, b, t):
    """The colour t of the way from a to b (0xRRGGBB integers)."""
    ca, cb = rgba(a), rgba(b)
    r, g, bl = (round(ca[i] + (cb[i] - ca[i]) * t) for i in range(3))
    return (r << 16) | (g << 8) | bl


def along(a, b, t):
    """The point t of the way from a to b."""
    return (a[0] + (b[0] - a[0]) * t, a[1] + (b[1] - a[1]) * t)


def ease_in_out(t):
    t = min(max(t, 0.0), 1.0)
    return 4 * t * t * t if t < 0.5 else 1 - (-2 * t + 2) ** 3 / 2


def ease_out(t):
    t = min(max(t, 0.0), 1.0)
    return 1 - (1 - t) ** 3


def ease_out_back(t):
    t = min(max(t, 0.0), 1.0)
    c = 1.6
    return 1 + (c + 1) * (t - 1) ** 3 + c * (t - 1) ** 2


@dataclass(frozen=True)
class Gradient:
    """A linear gradient from start to end, both points in canvas coordinates."""

    start_colour: int
    end_colour: int
    start: tuple
    end: tuple

    def render(self, canvas, bbox):
        # t is linear in x and y, so a coarse grid enlarged bilinearly is exact inside.
        x0, y0, x1, y1 = bbox
        w, h = x1 - x0, y1 - y0
        gw, gh = min(w, 64), min(h, 64)
        sx, sy = canvas.to_px(*self.start)
        ex, ey = canvas.to_px(*self.end)
        dx, dy = ex - sx, ey - sy
        length2 = dx * dx + dy * dy
        values = []
        for j in range(gh):
            py = y0 + (j + 0.5) * h / gh
            for i in range(gw):
                px = x0 + (i + 0.5) * w / gw
                t = ((px - sx) * dx + (py - sy) * dy) / length2
                values.append(round(255 * min(max(t, 0.0), 1.0)))
        ramp = Image.new("L", (gw, gh))
        ramp.putdata(values)
        ramp = ramp.resize((w, h), Image.BILINEAR)
        start = Image.new("RGBA", (w, h), rgba(self.start_colour))
        end = Image.new("RGBA", (w, h), rgba(self.end_colour))
        return Image.composite(end, start, ramp)


class Canvas:
    """An RGBA surface addressed in final pixels and drawn at SS times that size.

    origin is the final-pixel coordinate of the surface's top-left corner, so a small
    canvas can draw a piece of a larger picture with the same coordinates."""

    def __init__(self, size, origin=(0, 0), background=(0, 0, 0, 0)):
        self.size = size
        self.origin = origin
        self.image = Image.new("RGBA", (size[0] * SS, size[1] * SS), rgba(background))

    def to_px(self, x, y):
        return ((x - self.origin[0]) * SS, (y - self.origin[1]) * SS)

    def px_box(self, box):
        x0, y0 = self.to_px(box[0], box[1])
        x1, y1 = self.to_px(box[2], box[3])
        return (round(x0), round(y0), round(x1) - 1, round(y1) - 1)

    def new_mask(self):
        mask = Image.new("L", self.image.size, 0)
        return mask, ImageDraw.Draw(mask)

    def paint(self, mask, fill, opacity=1.0):
        """Composites fill (a colour or a Gradient) over the canvas through mask."""
        bbox = mask.getbbox()
        if bbox is None or opacity <= 0:
            return
        mask = mask.crop(bbox)
        if isinstance(fill, Gradient):
            layer = fill.render(self, bbox)
        else:
            layer = Image.new("RGBA", mask.size, rgba(fill) if isinstance(fill, int) else fill)
        alpha = ImageChops.multiply(layer.getchannel("A"), mask)
        if opacity < 1:
            alpha = alpha.point(lambda v: round(v * opacity))
        layer.putalpha(alpha)
        self.image.alpha_composite(layer, dest=bbox[:2])

    def rounded_rect(self, box, radius, fill, opacity=1.0):
        mask, draw = self.new_mask()
        draw.rounded_rectangle(self.px_box(box), radius=round(radius * SS), fill=255)
        self.paint(mask, fill, opacity)

    def ellipse(self, box, fill, opacity=1.0):
        mask, draw = self.new_mask()
        draw.ellipse(self.px_box(box), fill=255)
        self.paint(mask, fill, opacity)

    def ring(self, centre, radius, width, colour, opacity=1.0):
        cx, cy = centre
        mask, draw = self.new_mask()
        draw.ellipse(self.px_box((cx - radius, cy - radius, cx + radius, cy + radius)), fill=255)
        r = radius - width
        draw.ellipse(self.px_box((cx - r, cy - r, cx + r, cy + r)), fill=0)
        self.paint(mask, colour, opacity)

    def polygon(self, points, fill, opacity=1.0):
        mask, draw = self.new_mask()
        draw.polygon([self.to_px(x, y) for x, y in points], fill=255)
        self.paint(mask, fill, opacity)

    def stroke(self, points, width, colour, opacity=1.0):
        """A polyline with round joins and caps."""
        mask, draw = self.new_mask()
        px = [self.to_px(x, y) for x, y in points]
        w = width * SS
        if len(px) > 1:
            draw.line(px, fill=255, width=round(w), joint="curve")
        for x, y in (px[0], px[-1]):
            draw.ellipse((x - w / 2, y - w / 2, x + w / 2, y + w / 2), fill=255)
        self.paint(mask, colour, opacity)

    def text(self, xy, text, size, colour, bold=False, anchor="ls"):
        """Text at xy, placed by a Pillow anchor ("ls": left end of the baseline)."""
        font = ImageFont.truetype(FONT_BOLD if bold else FONT_REGULAR, round(size * SS))
        mask, draw = self.new_mask()
        draw.text(self.to_px(*xy), text, font=font, fill=255, anchor=anchor)
        self.paint(mask, colour)

    def shadow(self, box, radius, blur, offset, colour, opacity):
        """A soft shadow of a rounded rectangle, blurred by blur final pixels."""
        mask, draw = self.new_mask()
        dx, dy = offset
        draw.rounded_rectangle(
            self.px_box((box[0] + dx, box[1] + dy, box[2] + dx, box[3] + dy)),
            radius=round(radius * SS),
            fill=255,
        )
        # The faintest tail is dropped, so the shadow ends where the drawing says it does.
        soft = mask.filter(ImageFilter.GaussianBlur(blur * SS)).point(lambda v: v if v > 2 else 0)
        self.paint(soft, colour, opacity)

    def result(self):
        return self.image.resize(self.size, Image.LANCZOS)


def rounded_polygon(points, radius, steps=12):
    """The outline of a convex polygon whose corners are rounded with radius."""
    out = []
    n = len(points)
    for i in range(n):
        px, py = points[i - 1]
        cx, cy = points[i]
        nx, ny = points[(i + 1) % n]
        a = math.atan2(py - cy, px - cx)
        b = math.atan2(ny - cy, nx - cx)
        half = (b - a) % (2 * math.pi)
        if half > math.pi:
            half -= 2 * math.pi
        half = abs(half) / 2
        bisector = a + ((b - a + math.pi) % (2 * math.pi) - math.pi) / 2
        d = radius / math.sin(half)
        ox, oy = cx + d * math.cos(bisector), cy + d * math.sin(bisector)
        t = radius / math.tan(half)
        t1 = (cx + t * math.cos(a), cy + t * math.sin(a))
        t2 = (cx + t * math.cos(b), cy + t * math.sin(b))
        a1 = math.atan2(t1[1] - oy, t1[0] - ox)
        a2 = math.atan2(t2[1] - oy, t2[0] - ox)
        sweep = (a2 - a1 + math.pi) % (2 * math.pi) - math.pi
        for k in range(steps + 1):
            ang = a1 + sweep * k / steps
            out.append((ox + radius * math.cos(ang), oy + radius * math.sin(ang)))
    return out


# ---------------------------------------------------------------------------
# Marks


def brand_tile(canvas, box, top=BRAND_TOP, bottom=BRAND_BOTTOM, gloss=True):
    """The product mark: a stylised "L" with a dot in a rounded square filling box.

    Proportions follow the application icon, whose square spans 112 of its 128 units."""
    x0, y0, x1, y1 = box
    s = (x1 - x0) / 112

    def at(u, v):
        return (x0 + u * s, y0 + v * s)

    canvas.rounded_rect(box, 26 * s, Gradient(top, bottom, (x0, y0), (x1, y1)))
    if gloss:
        # A faint light from above gives the flat tile some depth.
        mask, draw = canvas.new_mask()
        draw.rounded_rectangle(canvas.px_box(box), radius=round(26 * s * SS), fill=255)
        fade = Image.new("L", mask.size, 0)
        fx0, fy0, fx1, fy1 = canvas.px_box(box)
        ramp = Image.linear_gradient("L").resize((fx1 - fx0 + 1, (fy1 - fy0 + 1) // 2))
        fade.paste(ImageChops.invert(ramp), (fx0, fy0))
        canvas.paint(ImageChops.multiply(mask, fade), WHITE, 0.16)
    r = 3 * s
    canvas.rounded_rect((*at(36, 26), *at(50, 86)), r, WHITE)
    canvas.rounded_rect((*at(36, 74), *at(78, 86)), r, WHITE)
    cx, cy = at(80, 34)
    canvas.ellipse((cx - 8 * s, cy - 8 * s, cx + 8 * s, cy + 8 * s), WHITE, 0.85)


def draw_lexmira_mark(size):
    canvas = Canvas((size, size))
    unit = size / 128
    box = (8 * unit, 8 * unit, 120 * unit, 120 * unit)
    canvas.shadow(box, 26 * unit, 2.5 * unit, (0, 2 * unit), 0x0B2A66, 0.30)
    brand_tile(canvas, box)
    return canvas.result()


def check_points(x0, y0, size):
    """The check of a tick, in a size x size square at (x0, y0)."""
    return [
        (x0 + 0.28 * size, y0 + 0.52 * size),
        (x0 + 0.44 * size, y0 + 0.68 * size),
        (x0 + 0.72 * size, y0 + 0.35 * size),
    ]


def draw_done_mark(size):
    canvas = Canvas((size, size))
    u = size / 32
    box = (1 * u, 1 * u, 31 * u, 31 * u)
    canvas.ellipse(box, Gradient(0x3DD07A, 0x1FA458, (0, 0), (size, size)))
    canvas.stroke(check_points(0, 0, size), 3.2 * u, WHITE)
    return canvas.result()


def draw_warning_mark(width, height, dark):
    canvas = Canvas((width, height))
    u = width / 46
    triangle = [(23 * u, 1.0 * u), (45.2 * u, 40.0 * u), (0.8 * u, 40.0 * u)]
    outline = rounded_polygon(triangle, 6.0 * u)
    if dark:
        fill = Gradient(0xFFC23D, 0xF5A00F, (0, 0), (0, height))
        glyph = 0x1C1D23
    else:
        fill = Gradient(0xFFB524, 0xF28A00, (0, 0), (0, height))
        glyph = WHITE
    canvas.polygon(outline, fill)
    canvas.rounded_rect((21.1 * u, 13.0 * u, 24.9 * u, 28.5 * u), 1.9 * u, glyph)
    canvas.ellipse((20.8 * u, 31.0 * u, 25.2 * u, 35.4 * u), glyph)
    return canvas.result()


# ---------------------------------------------------------------------------
# The animation: a settings window with an extensions list, where a pointer moves
# to the Lexmira entry and ticks its checkbox.

WIDTH, HEIGHT = 464, 536


@dataclass(frozen=True)
class Scheme:
    panel: int
    text: int
    accent: int
    accent_text: int
    toolbar: int
    body: int
    sidebar: int
    outline: int
    separator: int
    secondary: int
    skeleton: int
    skeleton_light: int
    dots: int
    tab_selected: int
    icon_off_top: int
    icon_off_bottom: int
    box_border: int
    box_fill: int
    box_pressed: int
    row_selected: int
    shadow: int
    shadow_opacity: float


LIGHT = Scheme(
    panel=0xFFFFFF,
    text=0x1C1E29,
    accent=0x196DEF,
    accent_text=0x196DEF,
    toolbar=0xF2F3F6,
    body=0xFFFFFF,
    sidebar=0xF8F9FB,
    outline=0xD6D8DE,
    separator=0xE3E5EA,
    secondary=0x7D818F,
    skeleton=0xD9DCE2,
    skeleton_light=0xE9EBEF,
    dots=0xD3D5DB,
    tab_selected=0xE2E5EB,
    icon_off_top=0xC3C7D0,
    icon_off_bottom=0xA9AEB9,
    box_border=0xB3B8C3,
    box_fill=0xFFFFFF,
    box_pressed=0xE6E8ED,
    row_selected=mix(0xF8F9FB, 0x196DEF, 0.10),
    shadow=0x1C2340,
    shadow_opacity=0.20,
)

DARK = Scheme(
    panel=0x1C1D23,
    text=0xDDDDDE,
    accent=0x1768E5,
    accent_text=mix(0x1768E5, 0xFFFFFF, 0.3),
    toolbar=0x2D2E36,
    body=0x25262D,
    sidebar=0x222329,
    outline=0x3D3E48,
    separator=0x35363F,
    secondary=0x8E909B,
    skeleton=0x41434D,
    skeleton_light=0x36373F,
    dots=0x4A4C56,
    tab_selected=0x3C3D47,
    icon_off_top=0x5F626D,
    icon_off_bottom=0x4B4E58,
    box_border=0x6C6F7B,
    box_fill=0x2D2E36,
    box_pressed=0x3C3D47,
    row_selected=mix(0x222329, 0x1768E5, 0.22),
    shadow=0x000000,
    shadow_opacity=0.55,
)

# Window geometry; the window runs on past the right and bottom edges. Its left edge stays
# well inside the picture, whose upper left sits next to the panel's instructions.
WIN = (56, 52, WIDTH + 60, HEIGHT + 60)
WIN_RADIUS = 18
TOOLBAR_BOTTOM = 172
SIDEBAR_RIGHT = 302
ROW_TOP = 186
ROW_HEIGHT = 64
ROW_LEFT, ROW_RIGHT = 66, 292
BOX_SIZE = 30
BOX_LEFT = 80
ICON_LEFT, ICON_SIZE = 122, 38
NAME_LEFT = 172
LEXMIRA_ROW = 2

# Entries of the list: checked, icon colours (None: the product), name-bar width.
ROWS = [
    (True, (0x34CDBE, 0x17A193), 96),
    (False, None, 78),
    (None, None, 0),  # Lexmira
    (True, (0xA07BF7, 0x7447E0), 106),
    (False, None, 86),
    (False, None, 100),
]

DETAIL_LEFT = 328
DETAIL_ICON = (DETAIL_LEFT, 196, DETAIL_LEFT + 72, 268)


def row_box(index):
    top = ROW_TOP + index * ROW_HEIGHT
    return (ROW_LEFT, top + 4, ROW_RIGHT, top + ROW_HEIGHT - 4)


def checkbox_box(index):
    _, y0, _, y1 = row_box(index)
    cy = (y0 + y1) / 2
    return (BOX_LEFT, cy - BOX_SIZE / 2, BOX_LEFT + BOX_SIZE, cy + BOX_SIZE / 2)


def icon_box(index):
    _, y0, _, y1 = row_box(index)
    cy = (y0 + y1) / 2
    return (ICON_LEFT, cy - ICON_SIZE / 2, ICON_LEFT + ICON_SIZE, cy + ICON_SIZE / 2)


def draw_checkbox(canvas, s, box, checked=1.0, tick=1.0, pressed=0.0, pop=1.0):
    """A checkbox; checked is the opacity of its blue fill, tick how much of the check is
    drawn, pressed how far it shows the pressed shade, pop the fill's scale."""
    x0, y0, x1, y1 = box
    radius = 7
    canvas.rounded_rect(box, radius, s.box_border)
    inner = (x0 + 2, y0 + 2, x1 - 2, y1 - 2)
    canvas.rounded_rect(inner, radius - 2, mix(s.box_fill, s.box_pressed, pressed))
    if checked <= 0:
        return
    cx, cy = (x0 + x1) / 2, (y0 + y1) / 2
    h = (x1 - x0) / 2 * pop
    fill = mix(s.accent, 0x0E3F99, 0.25 * pressed)
    canvas.rounded_rect((cx - h, cy - h, cx + h, cy + h), radius * pop, fill, checked)
    if tick > 0:
        points = check_points(x0, y0, x1 - x0)
        # Draw the check as far as tick reaches along its length.
        lengths = [math.dist(points[i], points[i + 1]) for i in range(len(points) - 1)]
        remaining = tick * sum(lengths)
        path = [points[0]]
        for (a, b), length in zip(zip(points, points[1:]), lengths):
            if remaining >= length:
                path.append(b)
                remaining -= length
            else:
                path.append(along(a, b, remaining / length))
                break
        canvas.stroke(path, 3.4, WHITE, checked)


def draw_icon(canvas, box, colours, glyph_index):
    x0, y0, x1, y1 = box
    size = x1 - x0
    top, bottom = colours
    canvas.rounded_rect(box, size * 0.24, Gradient(top, bottom, (x0, y0), (x1, y1)))
    cx, cy = (x0 + x1) / 2, (y0 + y1) / 2
    if glyph_index == 0:
        canvas.ring((cx, cy), size * 0.24, size * 0.09, WHITE)
    elif glyph_index == 1:
        q = size * 0.2
        canvas.rounded_rect((cx - q, cy - q, cx + q, cy + q), size * 0.06, WHITE, 0.9)
    elif glyph_index == 2:
        star = []
        for k in range(10):
            r = size * (0.27 if k % 2 == 0 else 0.12)
            a = k * math.pi / 5
            star.append((cx + r * math.sin(a), cy - r * math.cos(a)))
        canvas.polygon(star, WHITE)
    else:
        w = size * 0.36
        for k in range(3):
            y = cy - size * 0.16 + k * size * 0.16
            end = cx + w / 2 - (size * 0.12 if k == 2 else 0)
            canvas.stroke([(cx - w / 2, y), (end, y)], size * 0.08, WHITE)


def gear_points(cx, cy, outer, inner, teeth=8):
    points = []
    for k in range(teeth):
        base = 2 * math.pi * k / teeth
        step = 2 * math.pi / teeth
        for frac, r in ((0.0, inner), (0.12, outer), (0.38, outer), (0.5, inner)):
            a = base + frac * step
            points.append((cx + r * math.cos(a), cy + r * math.sin(a)))
        a = base + 0.75 * step
        points.append((cx + inner * math.cos(a), cy + inner * math.sin(a)))
    return points


def draw_tab_icons(canvas, s, centres, icon_y):
    # General: a gear.
    cx = centres[0]
    canvas.polygon(gear_points(cx, icon_y, 14, 10.5), s.secondary)
    canvas.ellipse((cx - 4.5, icon_y - 4.5, cx + 4.5, icon_y + 4.5), s.toolbar)
    # Privacy: a shield.
    cx = centres[1]
    shield = [(cx, icon_y - 14), (cx + 12, icon_y - 9), (cx + 11, icon_y + 3)]
    for k in range(1, 9):
        a = k / 9 * math.pi
        shield.append((cx + 11 * math.cos(a) * (1 - 0.1 * k / 9), icon_y + 3 + 11 * math.sin(a)))
    shield += [(cx - 11, icon_y + 3), (cx - 12, icon_y - 9)]
    canvas.polygon(shield, s.secondary)
    # Extensions: a puzzle piece in the accent colour.
    cx = centres[2]
    canvas.rounded_rect((cx - 11, icon_y - 7, cx + 8, icon_y + 12), 3, s.accent_text)
    canvas.ellipse((cx - 6, icon_y - 14, cx + 3, icon_y - 5), s.accent_text)
    canvas.ellipse((cx + 5, icon_y - 2, cx + 14, icon_y + 7), s.accent_text)
    canvas.ellipse((cx - 14, icon_y - 1, cx - 7, icon_y + 6), s.tab_selected)


def draw_window(s):
    """The still parts of the animation, with the Lexmira entry unticked."""
    canvas = Canvas((WIDTH, HEIGHT), background=s.panel)
    x0, y0, x1, y1 = WIN
    canvas.shadow(WIN, WIN_RADIUS, 10, (0, 8), s.shadow, s.shadow_opacity)
    canvas.shadow(WIN, WIN_RADIUS, 2, (0, 1), s.shadow, s.shadow_opacity * 0.6)
    canvas.rounded_rect(WIN, WIN_RADIUS, s.outline)
    inner = (x0 + 2, y0 + 2, x1 - 2, y1 - 2)
    canvas.rounded_rect(inner, WIN_RADIUS - 2, s.toolbar)

    # Content: sidebar and detail pane below the toolbar.
    canvas.rounded_rect((x0 + 2, TOOLBAR_BOTTOM, x1 - 2, y1 - 2), 0, s.body)
    canvas.rounded_rect((x0 + 2, TOOLBAR_BOTTOM, SIDEBAR_RIGHT, y1 - 2), 0, s.sidebar)
    canvas.rounded_rect((x0 + 2, TOOLBAR_BOTTOM - 2, x1 - 2, TOOLBAR_BOTTOM), 0, s.separator)
    canvas.rounded_rect((SIDEBAR_RIGHT, TOOLBAR_BOTTOM, SIDEBAR_RIGHT + 2, y1 - 2), 0, s.separator)

    # Title bar: window buttons and the title.
    for k in range(3):
        cx = x0 + 26 + k * 22
        canvas.ellipse((cx - 7, 74 - 7, cx + 7, 74 + 7), s.dots)
    canvas.text((282, 82), "Extensions", 21, s.text, bold=True, anchor="ms")

    # Toolbar tabs.
    centres = (194, 282, 370)
    canvas.rounded_rect((centres[2] - 48, 98, centres[2] + 48, 164), 12, s.tab_selected)
    draw_tab_icons(canvas, s, centres, 122)
    for index, (cx, label) in enumerate(zip(centres, ("General", "Privacy", "Extensions"))):
        selected = index == 2
        canvas.text((cx, 155), label, 15, s.accent_text if selected else s.secondary,
                    bold=selected, anchor="ms")

    # The list of extensions.
    glyph = 0
    for index, (checked, colours, bar) in enumerate(ROWS):
        _, by0, _, by1 = row_box(index)
        cy = (by0 + by1) / 2
        if index == LEXMIRA_ROW:
            canvas.rounded_rect(row_box(index), 12, s.row_selected)
            draw_checkbox(canvas, s, checkbox_box(index), checked=0)
            brand_tile(canvas, icon_box(index), s.icon_off_top, s.icon_off_bottom, gloss=False)
            canvas.text((NAME_LEFT, cy + 1), "Lexmira", 20, s.text, bold=True, anchor="ls")
            canvas.rounded_rect((NAME_LEFT, cy + 9, NAME_LEFT + 78, cy + 17), 4, s.skeleton_light)
            continue
        draw_checkbox(canvas, s, checkbox_box(index), checked=1 if checked else 0)
        if checked:
            draw_icon(canvas, icon_box(index), colours, glyph)
        else:
            draw_icon(canvas, icon_box(index), (s.icon_off_top, s.icon_off_bottom), glyph)
        glyph += 1
        canvas.rounded_rect((NAME_LEFT, cy - 13, NAME_LEFT + bar, cy - 1), 6, s.skeleton)
        canvas.rounded_rect(
            (NAME_LEFT, cy + 7, NAME_LEFT + bar * 0.7, cy + 15), 4, s.skeleton_light)

    # Detail pane of the selected entry.
    brand_tile(canvas, DETAIL_ICON, s.icon_off_top, s.icon_off_bottom, gloss=False)
    canvas.text((DETAIL_LEFT, 302), "Lexmira", 24, s.text, bold=True, anchor="ls")
    for k, w in enumerate((124, 108, 132, 80)):
        y = 324 + k * 20
        canvas.rounded_rect((DETAIL_LEFT, y, DETAIL_LEFT + w, y + 9), 4.5, s.skeleton_light)
    card = (DETAIL_LEFT, 420, WIDTH + 40, 540)
    canvas.rounded_rect(card, 12, s.separator)
    canvas.rounded_rect((card[0] + 2, card[1] + 2, card[2] - 2, card[3] - 2), 10, s.body)
    canvas.rounded_rect((DETAIL_LEFT + 20, 446, DETAIL_LEFT + 112, 458), 6, s.skeleton)
    canvas.rounded_rect((DETAIL_LEFT + 20, 470, DETAIL_LEFT + 132, 479), 4.5, s.skeleton_light)
    canvas.rounded_rect((DETAIL_LEFT + 20, 490, DETAIL_LEFT + 98, 499), 4.5, s.skeleton_light)
    return canvas.result()


def sprite_origin(box, margin):
    return (math.floor(box[0]) - margin, math.floor(box[1]) - margin)


def sprite_size(box, margin):
    ox, oy = sprite_origin(box, margin)
    return (math.ceil(box[2]) + margin - ox, math.ceil(box[3]) + margin - oy)


def draw_enabled_icons():
    """The product mark in colour over the list entry and the detail pane, on transparency."""
    sprites = []
    for box in (icon_box(LEXMIRA_ROW), DETAIL_ICON):
        canvas = Canvas(sprite_size(box, 2), sprite_origin(box, 2))
        brand_tile(canvas, box)
        sprites.append((canvas.result(), canvas.origin))
    return sprites


def draw_checkbox_sprite(s, **state):
    box = checkbox_box(LEXMIRA_ROW)
    canvas = Canvas(sprite_size(box, 4), sprite_origin(box, 4))
    draw_checkbox(canvas, s, box, **state)
    return canvas.result(), canvas.origin


# The pointer, tip at (0, 0), in final pixels of the reference.
ARROW = [(0, 0), (0, 27.5), (6.6, 21.4), (11.0, 31.6), (15.4, 29.8), (11.2, 19.9), (19.6, 19.9)]


def draw_pointer(x, y, scale):
    origin = (math.floor(x) - 12, math.floor(y) - 12)
    canvas = Canvas((52, 62), origin)
    arrow = [(x + px * scale, y + py * scale) for px, py in ARROW]
    halo = [(x + px * scale, y + py * scale + 2) for px, py in ARROW]
    mask, draw = canvas.new_mask()
    draw.polygon([canvas.to_px(*p) for p in halo], fill=255)
    outline = [canvas.to_px(*p) for p in halo + halo[:1]]
    draw.line(outline, fill=255, width=round(5 * SS), joint="curve")
    canvas.paint(mask.filter(ImageFilter.GaussianBlur(2.5 * SS)), 0x000000, 0.35)
    mask, draw = canvas.new_mask()
    draw.polygon([canvas.to_px(*p) for p in arrow], fill=255)
    outline = [canvas.to_px(*p) for p in arrow + arrow[:1]]
    draw.line(outline, fill=255, width=round(4.4 * SS), joint="curve")
    canvas.paint(mask, WHITE)
    canvas.polygon(arrow, 0x111111)
    return canvas.result(), origin


@dataclass
class FrameState:
    pointer: tuple
    pointer_scale: float = 1.0
    checked: float = 0.0
    tick: float = 0.0
    pressed: float = 0.0
    pop: float = 1.0
    enabled: float = 0.0


FRAME_MS = 40
REST = (392, 486)


def timeline():
    """The frames of one loop, as (state, duration in ms)."""
    box = checkbox_box(LEXMIRA_ROW)
    # The click lands in the lower right of the box, so the pointer hides little of the check.
    target = (box[0] + 19, box[1] + 20)
    aside = (target[0] + 22, target[1] + 8)

    def arc(t, start, end, bend):
        # The pointer travels on a gentle arc, the way a hand moves a mouse.
        u = ease_in_out(t)
        control = ((start[0] + end[0]) / 2 + bend[0], (start[1] + end[1]) / 2 + bend[1])
        x = (1 - u) ** 2 * start[0] + 2 * (1 - u) * u * control[0] + u * u * end[0]
        y = (1 - u) ** 2 * start[1] + 2 * (1 - u) * u * control[1] + u * u * end[1]
        return (x, y)

    frames = [(FrameState(REST), 700)]
    move = 28
    for k in range(1, move + 1):
        frames.append((FrameState(arc(k / move, REST, target, (30, -70))), FRAME_MS))
    frames.append((FrameState(target), 120))
    press = 3
    for k in range(1, press + 1):
        p = k / press
        frames.append((FrameState(target, 1 - 0.1 * p, pressed=p), FRAME_MS))
    appear = 14
    for k in range(1, appear + 1):
        t = k / appear
        drift = ease_in_out((t - 0.3) / 0.7)
        frames.append((FrameState(
            along(target, aside, drift),
            pointer_scale=0.9 + 0.1 * ease_out(t * 3),
            checked=ease_out(min(t * 3, 1)),
            pop=0.55 + 0.45 * ease_out_back(min(t * 3, 1)),
            tick=ease_in_out((t - 0.15) / 0.6),
            pressed=max(0.0, 1 - t * 3.5),
            enabled=ease_in_out((t - 0.25) / 0.75),
        ), FRAME_MS))
    frames.append((FrameState(aside, checked=1, tick=1, enabled=1), 1500))
    back = 22
    for k in range(1, back + 1):
        t = k / back
        fade = 1 - ease_in_out(min(t * 1.6, 1))
        frames.append((FrameState(
            arc(t, aside, REST, (40, 40)), checked=fade, tick=1, enabled=fade), FRAME_MS))
    return frames


def render_frame(s, base, icons, state):
    frame = base.copy()
    if state.enabled > 0:
        for sprite, origin in icons:
            if state.enabled < 1:
                sprite = sprite.copy()
                sprite.putalpha(sprite.getchannel("A").point(lambda v: round(v * state.enabled)))
            frame.alpha_composite(sprite, dest=origin)
    if state.checked > 0 or state.pressed > 0:
        sprite, origin = draw_checkbox_sprite(
            s, checked=state.checked, tick=state.tick, pressed=state.pressed, pop=state.pop)
        frame.alpha_composite(sprite, dest=origin)
    sprite, origin = draw_pointer(*state.pointer, state.pointer_scale)
    frame.alpha_composite(sprite, dest=origin)
    return frame.convert("RGB")


# Palette entries: the quantised colours, then the panel colour, then the index that later
# frames use for "unchanged since the previous frame".
PANEL = 254
UNCHANGED = 255


def to_palette(frames, panel):
    """All frames in one shared palette of 254 colours, with the panel colour kept exact.

    Quantising them together keeps a colour that stays put on one index in every frame."""
    sheet = Image.new("RGB", (WIDTH, HEIGHT * len(frames)))
    for k, frame in enumerate(frames):
        sheet.paste(frame, (0, HEIGHT * k))
    quantised = sheet.quantize(
        colors=PANEL, method=Image.Quantize.MEDIANCUT, dither=Image.Dither.NONE)
    colours = quantised.getpalette()[: PANEL * 3]
    colours += [0] * (PANEL * 3 - len(colours))
    palette = colours + list(rgba(panel)[:3]) + [255, 0, 255]
    indexed = Image.frombytes("L", sheet.size, quantised.tobytes())
    exact = ImageChops.difference(sheet, Image.new("RGB", sheet.size, rgba(panel)[:3])).convert("L")
    indexed.paste(PANEL, mask=exact.point(lambda v: 255 if v == 0 else 0))
    out = []
    for k in range(len(frames)):
        rows = indexed.crop((0, HEIGHT * k, WIDTH, HEIGHT * (k + 1)))
        frame = Image.frombytes("P", (WIDTH, HEIGHT), rows.tobytes())
        frame.putpalette(palette)
        out.append(frame)
    return out


def draw_animation(s):
    """The frames of one loop in palette colours, and their durations in ms."""
    base = draw_window(s)
    icons = draw_enabled_icons()
    frames, durations = [], []
    for state, duration in timeline():
        frames.append(render_frame(s, base, icons, state))
        durations.append(duration)
    indexed, lengths = [], []
    for frame, duration in zip(to_palette(frames, s.panel), durations):
        if indexed and frame.tobytes() == indexed[-1].tobytes():
            lengths[-1] += duration
        else:
            indexed.append(frame)
            lengths.append(duration)
    # The loop ends where it starts; the closing frame only lengthens the opening rest.
    if len(indexed) > 1 and indexed[-1].tobytes() == indexed[0].tobytes():
        lengths[0] += lengths.pop()
        indexed.pop()
    return indexed, lengths


def as_deltas(frames):
    """Frames after the first with every pixel equal to the previous frame's made UNCHANGED.

    The writer crops each frame to what differs from the one before; inside that
    rectangle, runs of UNCHANGED compress far better than the picture they show through."""
    out = [frames[0]]
    palette = frames[0].getpalette()
    for previous, frame in zip(frames, frames[1:]):
        before = Image.frombytes("L", previous.size, previous.tobytes())
        after = Image.frombytes("L", frame.size, frame.tobytes())
        same = ImageChops.difference(before, after).point(lambda v: 255 if v == 0 else 0)
        after.paste(UNCHANGED, mask=same)
        delta = Image.frombytes("P", frame.size, after.tobytes())
        delta.putpalette(palette)
        out.append(delta)
    return out


def save_gif(path, frames, durations):
    frames = as_deltas(frames)
    frames[0].save(
        path,
        save_all=True,
        append_images=frames[1:],
        duration=durations,
        loop=0,
        transparency=UNCHANGED,
        disposal=1,
        optimize=False,
    )


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "..", "..", "bundle", "artwork")
    out = os.path.normpath(out)
    os.makedirs(out, exist_ok=True)

    marks = {
        "LexmiraMark": lambda k: draw_lexmira_mark(56 * k),
        "DoneMark": lambda k: draw_done_mark(32 * k),
        "LightWarningMark": lambda k: draw_warning_mark(46 * k, 41 * k, dark=False),
        "DarkWarningMark": lambda k: draw_warning_mark(46 * k, 41 * k, dark=True),
    }
    for name, draw in marks.items():
        for k, suffix in ((1, ""), (2, "@2x")):
            path = os.path.join(out, f"{name}{suffix}.png")
            draw(k).save(path, optimize=True)
            print(path)

    animations = {"EnableLexmiraAnimationLight": LIGHT, "EnableLexmiraAnimationDark": DARK}
    for name, scheme in animations.items():
        frames, durations = draw_animation(scheme)
        path = os.path.join(out, f"{name}.gif")
        save_gif(path, frames, durations)
        print(path)


if __name__ == "__main__":
    main()
