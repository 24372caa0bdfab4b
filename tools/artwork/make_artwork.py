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

The animations show the extensions page of the browser the extension runs in, one for the
Chromium family and one for Firefox, each in a light and a dark appearance:
EnableLexmiraAnimation<Light|Dark><Chromium|Firefox>.gif at the size shown (232 x 268), and
@2x.gif at the reference size. On each, a pointer switches Lexmira on, the page rests a
moment, and the loop starts over.
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
FONT_CONDENSED = os.path.join(FONT_DIR, "DejaVuSansCondensed.ttf")
FONT_CONDENSED_BOLD = os.path.join(FONT_DIR, "DejaVuSansCondensed-Bold.ttf")

# The brand gradient of the application icon (data/com.lexmira.companion.svg).
BRAND_TOP = 0x2F80FF
BRAND_BOTTOM = 0x1455C8
WHITE = 0xFFFFFF


def font(size, bold=False, condensed=False):
    """DejaVu Sans at size final pixels, for drawing at SS times that size."""
    if condensed:
        name = FONT_CONDENSED_BOLD if bold else FONT_CONDENSED
    else:
        name = FONT_BOLD if bold else FONT_REGULAR
    return ImageFont.truetype(name, round(size * SS))


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

    def text(self, xy, text, size, colour, bold=False, anchor="ls", condensed=False):
        """Text at xy, placed by a Pillow anchor ("ls": left end of the baseline)."""
        mask, draw = self.new_mask()
        draw.text(self.to_px(*xy), text, font=font(size, bold, condensed), fill=255, anchor=anchor)
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
# The animations: a browser window showing its extensions page, where a pointer moves to
# Lexmira's switch and turns it on. One pair (light and dark) for the Chromium family and
# one for Firefox, each drawn the way that browser lays the page out.

WIDTH, HEIGHT = 464, 536


@dataclass(frozen=True)
class Switch:
    """A browser's colours for its switches, buttons and selection, in one appearance."""

    accent: int
    on_track: int
    on_knob: int
    off_track: int
    off_knob: int


@dataclass(frozen=True)
class Scheme:
    """The colours of one appearance. panel is the colour of the companion's panel around
    the picture, which the picture's margins match exactly."""

    panel: int
    text: int
    secondary: int
    frame: int
    toolbar: int
    field: int
    page: int
    card: int
    card_edge: int
    card_shadow: float
    outline: int
    separator: int
    icon_off_top: int
    icon_off_bottom: int
    shadow: int
    shadow_opacity: float
    chromium: Switch
    firefox: Switch


LIGHT = Scheme(
    panel=0xFFFFFF,
    text=0x1C1E29,
    secondary=0x62667A,
    frame=0xDDE0E6,
    toolbar=0xF7F8FA,
    field=0xE8EAEF,
    page=0xF1F2F5,
    card=0xFFFFFF,
    card_edge=0xE0E2E8,
    card_shadow=0.10,
    outline=0xC9CCD4,
    separator=0xDADDE3,
    icon_off_top=0xC3C7D0,
    icon_off_bottom=0xA9AEB9,
    shadow=0x1C2340,
    shadow_opacity=0.20,
    chromium=Switch(
        accent=0x1A73E8,
        on_track=mix(0xFFFFFF, 0x1A73E8, 0.5),  # the knob's colour at half strength on the card
        on_knob=0x1A73E8,
        off_track=0xBDC1C6,
        off_knob=0xFFFFFF,
    ),
    firefox=Switch(
        accent=0x0061E0,
        on_track=0x0061E0,
        on_knob=0xFFFFFF,
        off_track=0x8F8F9D,
        off_knob=0x5B5B66,
    ),
)

DARK = Scheme(
    panel=0x1C1D23,
    text=0xDDDDDE,
    secondary=0x9C9EA9,
    frame=0x222329,
    toolbar=0x2D2E36,
    field=0x1F2026,
    page=0x25262D,
    card=0x2F3039,
    card_edge=0x3A3B46,
    card_shadow=0.35,
    outline=0x3D3E48,
    separator=0x3A3B45,
    icon_off_top=0x5F626D,
    icon_off_bottom=0x4B4E58,
    shadow=0x000000,
    shadow_opacity=0.55,
    chromium=Switch(
        accent=0x8AB4F8,
        on_track=mix(0x2F3039, 0x8AB4F8, 0.5),
        on_knob=0x8AB4F8,
        off_track=0x5F626D,
        off_knob=0xDADCE0,
    ),
    firefox=Switch(
        accent=0xA7A3FF,
        on_track=0xA7A3FF,
        on_knob=0x1C1D23,
        off_track=0x8F8F9D,
        off_knob=0xBFBFC9,
    ),
)


@dataclass(frozen=True)
class Extension:
    name: str
    description: str
    colours: tuple  # the icon's gradient; None for Lexmira, drawn with its own mark
    glyph: int  # which of draw_icon's glyphs
    on: bool


# Lexmira among a few invented neighbours.
TAB_TIDY = Extension("Tab Tidy", "Sorts and groups your open tabs.", (0x34CDBE, 0x17A193), 2, True)
LEXMIRA = Extension("Lexmira", "Works with the Lexmira app.", None, None, False)
NOTE_PIN = Extension("Note Pin", "Pins short notes to any page.", (0xFFB547, 0xEE8422), 0, False)
DUSK_PAGE = Extension("Dusk Page", "Dims bright pages at night.", (0xA07BF7, 0x7447E0), 1, True)

# Window geometry; the window runs on past the right and bottom edges, and its left edge
# stays inside the picture, whose upper left sits next to the panel's instructions.
WIN = (20, 36, WIDTH + 60, HEIGHT + 60)
WIN_RADIUS = 12
TAB_LEFT, TAB_RIGHT = 42, 262
TAB_TOP = 44
TABS_BOTTOM = 82
TOOLBAR_BOTTOM = 128


def wrap(text, size, width, lines):
    """text broken at spaces into at most lines lines no wider than width; what does not fit
    is cut off with an ellipsis."""
    measure = font(size)
    out, words = [], text.split()
    while words and len(out) < lines:
        line = words.pop(0)
        while words and measure.getlength(line + " " + words[0]) <= width * SS:
            line += " " + words.pop(0)
        out.append(line)
    if words:
        while measure.getlength(out[-1] + "…") > width * SS:
            out[-1] = out[-1][:-1].rstrip()
        out[-1] += "…"
    return out


def draw_icon(canvas, box, colours, glyph_index):
    """An invented extension's icon: a plain white glyph on a rounded gradient square."""
    x0, y0, x1, y1 = box
    size = x1 - x0
    top, bottom = colours
    canvas.rounded_rect(box, size * 0.24, Gradient(top, bottom, (x0, y0), (x1, y1)))
    cx, cy = (x0 + x1) / 2, (y0 + y1) / 2
    if glyph_index == 0:
        q = size * 0.2
        canvas.rounded_rect((cx - q, cy - q, cx + q, cy + q), size * 0.06, WHITE, 0.9)
    elif glyph_index == 1:
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


def draw_extension_icon(canvas, s, box, extension):
    """An extension's icon, grey while the extension is off, as browsers show them."""
    if extension is LEXMIRA:
        brand_tile(canvas, box, s.icon_off_top, s.icon_off_bottom, gloss=False)
    elif extension.on:
        draw_icon(canvas, box, extension.colours, extension.glyph)
    else:
        draw_icon(canvas, box, (s.icon_off_top, s.icon_off_bottom), extension.glyph)


def draw_puzzle(canvas, centre, size, colour, background):
    """A puzzle piece, the usual sign for extensions, size across."""
    cx, cy = centre
    u = size / 28
    canvas.rounded_rect((cx - 11 * u, cy - 7 * u, cx + 8 * u, cy + 12 * u), 3 * u, colour)
    canvas.ellipse((cx - 6 * u, cy - 14 * u, cx + 3 * u, cy - 5 * u), colour)
    canvas.ellipse((cx + 5 * u, cy - 2 * u, cx + 14 * u, cy + 7 * u), colour)
    canvas.ellipse((cx - 14 * u, cy - 1 * u, cx - 7 * u, cy + 6 * u), background)


def draw_card(canvas, s, box, radius):
    x0, y0, x1, y1 = box
    canvas.shadow(box, radius, 3, (0, 1), s.shadow, s.card_shadow)
    canvas.rounded_rect(box, radius, s.card_edge)
    canvas.rounded_rect((x0 + 1.5, y0 + 1.5, x1 - 1.5, y1 - 1.5), radius - 1.5, s.card)


# ---------------------------------------------------------------------------
# The browser window around the page


def draw_window(canvas, s):
    """The window's edge and shadow, and the bands of its tab strip, toolbar and page."""
    x0, y0, x1, y1 = WIN
    canvas.shadow(WIN, WIN_RADIUS, 10, (0, 8), s.shadow, s.shadow_opacity)
    canvas.shadow(WIN, WIN_RADIUS, 2, (0, 1), s.shadow, s.shadow_opacity * 0.6)
    canvas.rounded_rect(WIN, WIN_RADIUS, s.outline)
    canvas.rounded_rect((x0 + 2, y0 + 2, x1 - 2, y1 - 2), WIN_RADIUS - 2, s.frame)
    canvas.rounded_rect((x0 + 2, TABS_BOTTOM, x1 - 2, TOOLBAR_BOTTOM), 0, s.toolbar)
    canvas.rounded_rect((x0 + 2, TOOLBAR_BOTTOM, x1 - 2, y1 - 2), 0, s.page)
    canvas.rounded_rect((x0 + 2, TOOLBAR_BOTTOM, x1 - 2, TOOLBAR_BOTTOM + 2), 0, s.separator)


def draw_tab_label(canvas, s, top, bottom, title):
    """The tab's icon, title and close button, and the new-tab button beside it."""
    cy = (top + bottom) / 2
    draw_puzzle(canvas, (TAB_LEFT + 22, cy), 17, s.secondary, s.toolbar)
    canvas.text((TAB_LEFT + 42, cy + 5.5), title, 15, s.text)
    cx = TAB_RIGHT - 20
    for d in (-1, 1):
        canvas.stroke([(cx - 5, cy - 5 * d), (cx + 5, cy + 5 * d)], 2, s.secondary)
    cx = TAB_RIGHT + 30
    canvas.stroke([(cx - 7, cy), (cx + 7, cy)], 2.2, s.secondary)
    canvas.stroke([(cx, cy - 7), (cx, cy + 7)], 2.2, s.secondary)


def draw_chromium_tab(canvas, s):
    """The selected tab, which widens into the toolbar at its foot."""
    r = 10
    canvas.rounded_rect((TAB_LEFT, TAB_TOP, TAB_RIGHT, TABS_BOTTOM + r), r, s.toolbar)
    # Each foot is a square of toolbar with a quarter circle of the strip taken out of it.
    for left in (TAB_LEFT - r, TAB_RIGHT):
        canvas.rounded_rect((left, TABS_BOTTOM - r, left + r, TABS_BOTTOM), 0, s.toolbar)
    for cx in (TAB_LEFT - r, TAB_RIGHT + r):
        canvas.ellipse((cx - r, TABS_BOTTOM - 2 * r, cx + r, TABS_BOTTOM), s.frame)
    draw_tab_label(canvas, s, TAB_TOP, TABS_BOTTOM, "Extensions")


def draw_firefox_tab(canvas, s):
    """The selected tab, which floats above the tab strip."""
    box = (TAB_LEFT, TAB_TOP, TAB_RIGHT, TABS_BOTTOM - 6)
    canvas.shadow(box, 6, 1.5, (0, 1), s.shadow, s.shadow_opacity * 0.6)
    canvas.rounded_rect(box, 6, s.toolbar)
    draw_tab_label(canvas, s, TAB_TOP, TABS_BOTTOM - 6, "Add-ons Manager")


def draw_toolbar(canvas, s, field_radius, address):
    cy = (TABS_BOTTOM + TOOLBAR_BOTTOM) / 2
    # Back, forward (nowhere to go) and reload.
    for cx, direction, opacity in ((44, -1, 1.0), (78, 1, 0.4)):
        tip = cx + 8 * direction
        canvas.stroke([(cx - 8 * direction, cy), (tip, cy)], 2.4, s.secondary, opacity)
        canvas.stroke([(tip - 7 * direction, cy - 7), (tip, cy), (tip - 7 * direction, cy + 7)],
                      2.4, s.secondary, opacity)
    # Reload: a circle open at the upper right, its arrowhead pointing on clockwise.
    cx, r = 112, 8
    arc = [(cx + r * math.cos(a), cy + r * math.sin(a))
           for a in (math.radians(d) for d in range(15, 301, 15))]
    canvas.stroke(arc, 2.4, s.secondary)
    a = math.radians(300)
    end = arc[-1]
    tangent, normal = (-math.sin(a), math.cos(a)), (math.cos(a), math.sin(a))
    canvas.polygon([
        (end[0] + 5 * tangent[0], end[1] + 5 * tangent[1]),
        (end[0] - 2 * tangent[0] + 5 * normal[0], end[1] - 2 * tangent[1] + 5 * normal[1]),
        (end[0] - 2 * tangent[0] - 5 * normal[0], end[1] - 2 * tangent[1] - 5 * normal[1]),
    ], s.secondary)
    field = (136, cy - 16, WIDTH + 40, cy + 16)
    canvas.rounded_rect(field, field_radius, s.field)
    draw_puzzle(canvas, (158, cy), 15, s.secondary, s.field)
    canvas.text((176, cy + 5.5), address, 15, s.text)


# ---------------------------------------------------------------------------
# The Chromium extensions page: a header bar, then a column of cards with the switch at
# the lower right.

CHROMIUM_HEADER_BOTTOM = 188
CHROMIUM_CARDS = (TAB_TIDY, LEXMIRA, DUSK_PAGE)
CHROMIUM_CARD_TOP, CHROMIUM_CARD_HEIGHT, CHROMIUM_CARD_GAP = 206, 130, 14
CHROMIUM_CARD_LEFT, CHROMIUM_CARD_RIGHT = 40, 440
CHROMIUM_KNOB = 12
CHROMIUM_RIPPLE = 22


def chromium_card(index):
    top = CHROMIUM_CARD_TOP + index * (CHROMIUM_CARD_HEIGHT + CHROMIUM_CARD_GAP)
    return (CHROMIUM_CARD_LEFT, top, CHROMIUM_CARD_RIGHT, top + CHROMIUM_CARD_HEIGHT)


def chromium_icon(card):
    return (card[0] + 20, card[1] + 20, card[0] + 64, card[1] + 64)


def chromium_switch(card):
    return (card[2] - 66, card[1] + 93, card[2] - 24, card[1] + 109)


def draw_chromium_switch(canvas, s, box, on=0.0, pressed=0.0):
    """A switch whose round knob overhangs its track; on is how far the knob has slid, and
    pressed how strongly the ring of a press shows around it."""
    c = s.chromium
    x0, y0, x1, y1 = box
    cy = (y0 + y1) / 2
    r = (y1 - y0) / 2
    canvas.rounded_rect(box, r, mix(c.off_track, c.on_track, on))
    cx = x0 + r + (x1 - x0 - 2 * r) * on
    if pressed > 0:
        ripple = CHROMIUM_RIPPLE
        canvas.ellipse((cx - ripple, cy - ripple, cx + ripple, cy + ripple),
                       mix(s.secondary, c.accent, on), 0.22 * pressed)
    knob = (cx - CHROMIUM_KNOB, cy - CHROMIUM_KNOB, cx + CHROMIUM_KNOB, cy + CHROMIUM_KNOB)
    canvas.shadow(knob, CHROMIUM_KNOB, 1.2, (0, 1), 0x000000, 0.35)
    canvas.ellipse(knob, mix(c.off_knob, c.on_knob, on))


def draw_chromium_card(canvas, s, card, extension):
    x0, y0, x1, y1 = card
    draw_card(canvas, s, card, 12)
    draw_extension_icon(canvas, s, chromium_icon(card), extension)
    canvas.text((x0 + 80, y0 + 42), extension.name, 20, s.text, bold=True)
    line, = wrap(extension.description, 16, x1 - 20 - (x0 + 80), 1)
    canvas.text((x0 + 80, y0 + 68), line, 16, s.secondary)
    for label, left, right in (("Details", 20, 106), ("Remove", 118, 206)):
        button = (x0 + left, y0 + 86, x0 + right, y0 + 116)
        canvas.rounded_rect(button, 15, s.separator)
        canvas.rounded_rect((button[0] + 1.5, button[1] + 1.5, button[2] - 1.5, button[3] - 1.5),
                            13.5, s.card)
        canvas.text(((button[0] + button[2]) / 2, y0 + 106), label, 15, s.chromium.accent,
                    anchor="ms")
    draw_chromium_switch(canvas, s, chromium_switch(card), on=1.0 if extension.on else 0.0)


def draw_chromium_page(s):
    """The still picture of the Chromium page, with Lexmira switched off."""
    canvas = Canvas((WIDTH, HEIGHT), background=s.panel)
    draw_window(canvas, s)
    draw_chromium_tab(canvas, s)
    draw_toolbar(canvas, s, 16, "extensions")

    x0, _, x1, _ = WIN
    bottom = CHROMIUM_HEADER_BOTTOM
    canvas.rounded_rect((x0 + 2, TOOLBAR_BOTTOM + 2, x1 - 2, bottom), 0, s.card)
    canvas.rounded_rect((x0 + 2, bottom, x1 - 2, bottom + 2), 0, s.separator)
    cy = (TOOLBAR_BOTTOM + bottom) / 2 + 1
    for dy in (-8, 0, 8):
        canvas.stroke([(42, cy + dy), (60, cy + dy)], 2.4, s.text)
    canvas.text((78, cy + 8), "Extensions", 22, s.text)
    canvas.text((386, cy + 5.5), "Developer mode", 15, s.secondary, anchor="rs")
    draw_chromium_switch(canvas, s, (398, cy - 8, 440, cy + 8))

    for index, extension in enumerate(CHROMIUM_CARDS):
        draw_chromium_card(canvas, s, chromium_card(index), extension)
    return canvas.result()


# ---------------------------------------------------------------------------
# The Firefox add-ons manager: a sidebar of categories, then a column of cards with the
# switch at the upper right.

FIREFOX_SIDEBAR_RIGHT = 206
FIREFOX_CATEGORIES = ("Recommendations", "Extensions", "Themes", "Plugins")
FIREFOX_SELECTED = 1
FIREFOX_CARDS = (TAB_TIDY, LEXMIRA, NOTE_PIN)
FIREFOX_CARD_TOP, FIREFOX_CARD_HEIGHT, FIREFOX_CARD_GAP = 196, 98, 12
FIREFOX_CARD_LEFT, FIREFOX_CARD_RIGHT = 220, 452


def firefox_card(index):
    top = FIREFOX_CARD_TOP + index * (FIREFOX_CARD_HEIGHT + FIREFOX_CARD_GAP)
    return (FIREFOX_CARD_LEFT, top, FIREFOX_CARD_RIGHT, top + FIREFOX_CARD_HEIGHT)


def firefox_icon(card):
    return (card[0] + 16, card[1] + 18, card[0] + 52, card[1] + 54)


def firefox_switch(card):
    return (card[2] - 54, card[1] + 21, card[2] - 16, card[1] + 43)


def draw_firefox_switch(canvas, s, box, on=0.0, pressed=0.0):
    """A switch with a small knob inside an outlined track that fills when on; on is how
    far the knob has slid, and pressed how much the track darkens under a press."""
    c = s.firefox
    x0, y0, x1, y1 = box
    cy = (y0 + y1) / 2
    r = (y1 - y0) / 2
    canvas.rounded_rect(box, r, mix(c.off_track, c.on_track, on))
    inside = mix(mix(s.card, s.text, 0.14 * pressed), c.on_track, on)
    canvas.rounded_rect((x0 + 2, y0 + 2, x1 - 2, y1 - 2), r - 2, inside)
    cx = x0 + r + (x1 - x0 - 2 * r) * on
    knob = r - 5
    canvas.ellipse((cx - knob, cy - knob, cx + knob, cy + knob), mix(c.off_knob, c.on_knob, on))


def draw_category_glyph(canvas, s, index, centre, colour):
    cx, cy = centre
    if index == 0:
        # Recommendations: a four-pointed sparkle.
        points = []
        for k in range(8):
            r = 10 if k % 2 == 0 else 3.2
            a = k * math.pi / 4
            points.append((cx + r * math.sin(a), cy - r * math.cos(a)))
        canvas.polygon(points, colour)
    elif index == 1:
        draw_puzzle(canvas, centre, 19, colour, mix(s.page, s.firefox.accent, 0.12))
    elif index == 2:
        # Themes: a brush.
        canvas.stroke([(cx - 1, cy + 1), (cx + 7, cy - 7)], 3.6, colour)
        canvas.ellipse((cx - 9, cy - 1, cx + 1, cy + 9), colour)
    else:
        # Plugins: a plug.
        canvas.rounded_rect((cx - 7, cy - 3, cx + 7, cy + 5), 3, colour)
        for dx in (-3.5, 3.5):
            canvas.stroke([(cx + dx, cy - 9), (cx + dx, cy - 3)], 2.2, colour)
        canvas.stroke([(cx, cy + 5), (cx, cy + 10)], 2.4, colour)


def draw_firefox_card(canvas, s, card, extension):
    x0, y0, x1, y1 = card
    draw_card(canvas, s, card, 8)
    draw_extension_icon(canvas, s, firefox_icon(card), extension)
    canvas.text((x0 + 64, y0 + 40), extension.name, 20, s.text, bold=True)
    for k, line in enumerate(wrap(extension.description, 15, x1 - 16 - (x0 + 64), 2)):
        canvas.text((x0 + 64, y0 + 64 + 20 * k), line, 15, s.secondary)
    draw_firefox_switch(canvas, s, firefox_switch(card), on=1.0 if extension.on else 0.0)


def draw_firefox_page(s):
    """The still picture of the Firefox page, with Lexmira switched off."""
    canvas = Canvas((WIDTH, HEIGHT), background=s.panel)
    draw_window(canvas, s)
    draw_firefox_tab(canvas, s)
    draw_toolbar(canvas, s, 6, "addons")

    for index, label in enumerate(FIREFOX_CATEGORIES):
        cy = 168 + 46 * index
        selected = index == FIREFOX_SELECTED
        colour = s.firefox.accent if selected else s.secondary
        if selected:
            canvas.rounded_rect((28, cy - 19, FIREFOX_SIDEBAR_RIGHT - 6, cy + 19), 8,
                                mix(s.page, s.firefox.accent, 0.12))
        draw_category_glyph(canvas, s, index, (46, cy), colour)
        canvas.text((66, cy + 6), label, 16, s.firefox.accent if selected else s.text,
                    bold=selected, condensed=True)

    canvas.text((FIREFOX_CARD_LEFT, 176), "Manage Your Extensions", 20, s.text, condensed=True)
    for index, extension in enumerate(FIREFOX_CARDS):
        draw_firefox_card(canvas, s, firefox_card(index), extension)
    return canvas.result()


# ---------------------------------------------------------------------------
# The moving parts


@dataclass(frozen=True)
class Browser:
    """One browser's page: how to draw it and its switch, and where the pointer goes."""

    draw_page: object
    draw_switch: object
    switch: tuple  # Lexmira's switch
    switch_margin: int  # how far a pressed switch reaches past its track
    icon: tuple  # Lexmira's icon
    rest: tuple  # where the pointer waits between clicks
    aside: tuple  # where it goes after the click, from where it clicked
    bend: tuple  # how far its way to the switch bows out
    bend_back: tuple  # and its way back


CHROMIUM = Browser(
    draw_page=draw_chromium_page,
    draw_switch=draw_chromium_switch,
    switch=chromium_switch(chromium_card(1)),
    switch_margin=CHROMIUM_RIPPLE - 8 + 2,
    icon=chromium_icon(chromium_card(1)),
    rest=(288, 300),
    aside=(6, 28),
    bend=(40, -30),
    bend_back=(-50, 30),
)

FIREFOX = Browser(
    draw_page=draw_firefox_page,
    draw_switch=draw_firefox_switch,
    switch=firefox_switch(firefox_card(1)),
    switch_margin=3,
    icon=firefox_icon(firefox_card(1)),
    rest=(110, 430),
    aside=(20, 28),
    bend=(30, 50),
    bend_back=(20, 60),
)


def sprite_origin(box, margin):
    return (math.floor(box[0]) - margin, math.floor(box[1]) - margin)


def sprite_size(box, margin):
    ox, oy = sprite_origin(box, margin)
    return (math.ceil(box[2]) + margin - ox, math.ceil(box[3]) + margin - oy)


def draw_enabled_icon(browser):
    """The product mark in colour over Lexmira's grey icon, on transparency."""
    box = browser.icon
    canvas = Canvas(sprite_size(box, 2), sprite_origin(box, 2))
    brand_tile(canvas, box)
    return canvas.result(), canvas.origin


def draw_switch_sprite(s, browser, on, pressed):
    """Lexmira's switch with the card around it, which covers the switch of the still picture."""
    box, margin = browser.switch, browser.switch_margin
    canvas = Canvas(sprite_size(box, margin), sprite_origin(box, margin), background=s.card)
    browser.draw_switch(canvas, s, box, on=on, pressed=pressed)
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
    pressed: float = 0.0
    on: float = 0.0  # how far the knob has slid
    switched: float = 1.0  # how much the switch shows its new state over the still picture
    enabled: float = 0.0  # how much Lexmira's icon shows its colours


FRAME_MS = 40


def timeline(browser):
    """The frames of one loop, as (state, duration in ms)."""
    x0, y0, x1, y1 = browser.switch
    # The click lands on the knob, and the pointer then steps off the switch so the knob
    # can be seen sliding across.
    target = (x0 + 12, (y0 + y1) / 2 + 2)
    aside = (target[0] + browser.aside[0], target[1] + browser.aside[1])
    rest = browser.rest

    def arc(t, start, end, bend):
        # The pointer travels on a gentle arc, the way a hand moves a mouse.
        u = ease_in_out(t)
        control = ((start[0] + end[0]) / 2 + bend[0], (start[1] + end[1]) / 2 + bend[1])
        x = (1 - u) ** 2 * start[0] + 2 * (1 - u) * u * control[0] + u * u * end[0]
        y = (1 - u) ** 2 * start[1] + 2 * (1 - u) * u * control[1] + u * u * end[1]
        return (x, y)

    frames = [(FrameState(rest), 700)]
    move = 28
    for k in range(1, move + 1):
        frames.append((FrameState(arc(k / move, rest, target, browser.bend)), FRAME_MS))
    frames.append((FrameState(target), 120))
    press = 3
    for k in range(1, press + 1):
        p = k / press
        frames.append((FrameState(target, 1 - 0.1 * p, pressed=p), FRAME_MS))
    slide = 14
    for k in range(1, slide + 1):
        t = k / slide
        drift = ease_in_out((t - 0.3) / 0.7)
        frames.append((FrameState(
            along(target, aside, drift),
            pointer_scale=0.9 + 0.1 * ease_out(t * 3),
            pressed=max(0.0, 1 - t * 2.5),
            on=ease_in_out(t / 0.5),
            enabled=ease_in_out((t - 0.25) / 0.75),
        ), FRAME_MS))
    frames.append((FrameState(aside, on=1, enabled=1), 1500))
    back = 22
    for k in range(1, back + 1):
        t = k / back
        fade = 1 - ease_in_out(min(t * 1.6, 1))
        frames.append((FrameState(
            arc(t, aside, rest, browser.bend_back), on=1, switched=fade, enabled=fade),
            FRAME_MS))
    return frames


def faded(sprite, opacity):
    if opacity >= 1:
        return sprite
    sprite = sprite.copy()
    sprite.putalpha(sprite.getchannel("A").point(lambda v: round(v * opacity)))
    return sprite


def render_frame(s, browser, base, icon, state):
    frame = base.copy()
    if state.enabled > 0:
        sprite, origin = icon
        frame.alpha_composite(faded(sprite, state.enabled), dest=origin)
    if (state.on > 0 or state.pressed > 0) and state.switched > 0:
        sprite, origin = draw_switch_sprite(s, browser, state.on, state.pressed)
        frame.alpha_composite(faded(sprite, state.switched), dest=origin)
    sprite, origin = draw_pointer(*state.pointer, state.pointer_scale)
    frame.alpha_composite(sprite, dest=origin)
    return frame.convert("RGB")


# Palette entries: the quantised colours, then the panel colour.
PANEL = 254


def to_palette(frames, panel):
    """All frames in one shared palette of 254 colours, with the panel colour kept exact.

    Quantising them together keeps a colour that stays put on one index in every frame.
    The palette covers the colours that occur rather than weighing them by area, so a small
    icon's gradient gets as many entries as the large grey surfaces and is not banded."""
    width, height = frames[0].size
    sheet = Image.new("RGB", (width, height * len(frames)))
    for k, frame in enumerate(frames):
        sheet.paste(frame, (0, height * k))
    quantised = sheet.quantize(
        colors=PANEL, method=Image.Quantize.MAXCOVERAGE, dither=Image.Dither.NONE)
    colours = quantised.getpalette()[: PANEL * 3]
    colours += [0] * (PANEL * 3 - len(colours))
    palette = colours + list(rgba(panel)[:3]) + [255, 0, 255]
    indexed = Image.frombytes("L", sheet.size, quantised.tobytes())
    exact = ImageChops.difference(sheet, Image.new("RGB", sheet.size, rgba(panel)[:3])).convert("L")
    indexed.paste(PANEL, mask=exact.point(lambda v: 255 if v == 0 else 0))
    out = []
    for k in range(len(frames)):
        rows = indexed.crop((0, height * k, width, height * (k + 1)))
        frame = Image.frombytes("P", (width, height), rows.tobytes())
        frame.putpalette(palette)
        out.append(frame)
    return out


def draw_animation(s, browser, scale=1):
    """The frames of one loop in palette colours, and their durations in ms.

    Drawn at the natural size and, for a scale below 1, resampled down before the colours are
    chosen, so the smaller loop has a palette of its own."""
    base = browser.draw_page(s)
    icon = draw_enabled_icon(browser)
    size = (round(WIDTH * scale), round(HEIGHT * scale))
    frames, durations = [], []
    for state, duration in timeline(browser):
        frame = render_frame(s, browser, base, icon, state)
        if frame.size != size:
            frame = frame.resize(size, Image.Resampling.LANCZOS)
        frames.append(frame)
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


def save_gif(path, frames, durations):
    # Every frame is opaque, with no transparent index: Qt decodes such a GIF straight to RGB32
    # frames, which show as they are. A transparent index would make each frame ARGB32, and each
    # would then be scanned and converted, pixel by pixel, every time it is shown.
    frames[0].save(
        path,
        save_all=True,
        append_images=frames[1:],
        duration=durations,
        loop=0,
        disposal=1,
        optimize=False,
    )


# ---------------------------------------------------------------------------
# The application icon as PNGs for the hicolor theme, beside the scalable
# data/com.lexmira.companion.svg: the same tile, flat and without a shadow, so that
# every size looks like the SVG drawn at that size.

APP_ICON_SIZES = (16, 22, 24, 32, 48, 64, 128, 256, 512)


def draw_app_icon(size):
    canvas = Canvas((size, size))
    unit = size / 128
    brand_tile(canvas, (8 * unit, 8 * unit, 120 * unit, 120 * unit), gloss=False)
    return canvas.result()


def save_app_icons(theme_dir):
    """Writes <theme_dir>/<N>x<N>/apps/com.lexmira.companion.png for every size."""
    for size in APP_ICON_SIZES:
        folder = os.path.join(theme_dir, f"{size}x{size}", "apps")
        os.makedirs(folder, exist_ok=True)
        path = os.path.join(folder, "com.lexmira.companion.png")
        draw_app_icon(size).save(path, optimize=True)
        print(path)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "..", "..", "bundle", "artwork")
    out = os.path.normpath(out)
    # The application icons go to the desktop data, or beside the artwork when an output
    # directory is given.
    icons = os.path.join(out, "hicolor") if len(sys.argv) > 1 else os.path.normpath(
        os.path.join(here, "..", "..", "data", "icons", "hicolor"))
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

    # The loop is shown at half its natural size: name.gif is that size, name@2x.gif the
    # natural one for screens with two device pixels to a point. Each plays without being
    # scaled frame by frame.
    for browser_name, browser in (("Chromium", CHROMIUM), ("Firefox", FIREFOX)):
        for appearance, scheme in (("Light", LIGHT), ("Dark", DARK)):
            for scale, suffix in ((0.5, ""), (1, "@2x")):
                frames, durations = draw_animation(scheme, browser, scale)
                path = os.path.join(
                    out, f"EnableLexmiraAnimation{appearance}{browser_name}{suffix}.gif")
                save_gif(path, frames, durations)
                print(path)

    save_app_icons(icons)


if __name__ == "__main__":
    main()
