"""The times from motion to painted as a small picture."""

from PIL import Image, ImageDraw, ImageFont

WIDTH, HEIGHT = 720, 300
FINER = 3  # drawn larger by this factor and then made smaller, for smooth edges
LEFT, RIGHT, TOP, BOTTOM = 56, 16, 62, 44
FRAME = 1 / 60  # seconds between two pictures of a usual screen

INK, MUTED, LINE, PAPER = "#1F2933", "#616E7C", "#CBD2D9", "#FFFFFF"
HOVER, DRAG = "#3572B0", "#E8833A"


def draw(hovers, drags):
    """Bars of the medians by number of shapes, with marks at 95 and 99 in a hundred."""
    return _Chart(hovers, drags).image()


class _Chart:
    def __init__(self, hovers, drags):
        self._hovers, self._drags = hovers, drags
        self._top = _round_up(1100 * max(t.p99 for t in [*hovers, *drags]))
        self._image = Image.new("RGB", (WIDTH * FINER, HEIGHT * FINER), PAPER)
        self._pen = ImageDraw.Draw(self._image)

    def image(self):
        self._text(LEFT, 12, "From pointer motion to painted picture", INK, size=15, bold=True)
        self._legend()
        self._scale()
        dragged = {latency.shapes: latency for latency in self._drags}
        field = (WIDTH - LEFT - RIGHT) / len(self._hovers)
        for k, latency in enumerate(self._hovers):
            middle = LEFT + field * (k + 0.5)
            self._text(middle, HEIGHT - BOTTOM + 8, f"{latency.shapes:,} shapes", INK, anchor="ma")
            if latency.shapes in dragged:
                self._bar(middle - 22, latency, HOVER)
                self._bar(middle + 22, dragged[latency.shapes], DRAG)
            else:
                self._bar(middle, latency, HOVER)
        return self._image.resize((WIDTH, HEIGHT), Image.LANCZOS)

    def _legend(self):
        x = LEFT
        for colour, text in ((HOVER, "moving over the sketch"), (DRAG, "dragging a shape")):
            self._box(x, 37, x + 10, 47, colour)
            self._text(x + 15, 35, text, MUTED)
            x += 30 + self._pen.textlength(text, font=_font(12)) / FINER
        note = "bar: median; marks: 95 %, 99 %; dashes: 1/60 s"
        self._text(x, 35, note, MUTED)

    def _scale(self):
        step = self._top / 4
        for k in range(5):
            y = self._y(k * step)
            self._line(LEFT, y, WIDTH - RIGHT, y, LINE)
            self._text(LEFT - 8, y, f"{k * step:g} ms", MUTED, anchor="rm")
        if 1000 * FRAME < self._top:
            for x in range(LEFT, WIDTH - RIGHT, 8):
                self._line(x, self._y(1000 * FRAME), x + 4, self._y(1000 * FRAME), MUTED)

    def _bar(self, middle, latency, colour):
        self._box(middle - 15, self._y(1000 * latency.median), middle + 15, self._y(0), colour)
        for value, half in ((latency.p95, 9), (latency.p99, 5)):
            y = self._y(1000 * value)
            self._line(middle - half, y, middle + half, y, INK)
        self._line(middle, self._y(1000 * latency.p99), middle, self._y(1000 * latency.median), INK)
        text = f"{1000 * latency.median:.2g} ms"
        self._text(middle, self._y(1000 * latency.p99) - 4, text, INK, anchor="ms")

    def _y(self, milliseconds):
        return HEIGHT - BOTTOM - (HEIGHT - BOTTOM - TOP) * milliseconds / self._top

    def _box(self, x1, y1, x2, y2, colour):
        self._pen.rectangle([FINER * v for v in (x1, y1, x2, y2)], fill=colour)

    def _line(self, x1, y1, x2, y2, colour):
        self._pen.line([FINER * v for v in (x1, y1, x2, y2)], fill=colour, width=FINER)

    def _text(self, x, y, text, colour, anchor="la", size=12, bold=False):
        place = FINER * x, FINER * y
        halo = {"stroke_width": 2 * FINER, "stroke_fill": PAPER}
        self._pen.text(place, text, fill=colour, font=_font(size, bold), anchor=anchor, **halo)


def _font(size, bold=False):
    return ImageFont.truetype("DejaVuSans-Bold.ttf" if bold else "DejaVuSans.ttf", FINER * size)


def _round_up(milliseconds):
    """The next of 1, 2, 4, 5, 8, 10, 20 ... to end a scale with."""
    power = 0.1
    while True:
        for leading in (1, 2, 4, 5, 8):
            if leading * power >= milliseconds:
                return leading * power
        power *= 10
