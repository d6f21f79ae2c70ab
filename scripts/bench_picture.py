"""Draws the table of scripts/bench.sh as bars, in SVG."""

WIDTH, LEFT, RIGHT = 1120, 270, 130  # of the picture; of what is left and right of the bars
BAR, GAP, TOP = 15, 13, 96  # height of a bar; between two operations; above the first one
OURS, THEIRS = "#d9772b", ["#3f6fb0", "#7a5ba8"]


def draw(values, peers):
    """The picture of the times in values (ns). The rows of a peer are named PEER/OPERATION."""
    operations = [name for name in values if "/" not in name and name != "floor"]
    scale = (WIDTH - LEFT - RIGHT) / max(values.values())
    shapes, y = [], TOP
    for operation in operations:
        bars = [(values[operation], OURS)]
        bars += [(values.get(f"{peer}/{operation}"), colour) for peer, colour in zip(peers, THEIRS)]
        bars = [bar for bar in bars if bar[0]]
        shapes.append(f"<text x='{LEFT - 12}' y='{y + 12}' text-anchor='end'>{operation}</text>")
        for number, (value, colour) in enumerate(bars):
            width = scale * value
            times = f" = {value / values[operation]:.1f} x ours" if number else ""
            shapes.append(f"<rect x='{LEFT}' y='{y}' width='{width:.1f}' height='{BAR - 2}' fill='{colour}'/>")
            shapes.append(f"<text class='note' x='{LEFT + width + 7:.1f}' y='{y + 11}'>{value:.0f}{times}</text>")
            y += BAR
        y += GAP
    legend, x = [], LEFT
    for name, colour in [("this plug-in", OURS)] + list(zip(peers, THEIRS)):
        legend.append(f"<rect x='{x}' y='65' width='12' height='12' rx='2' fill='{colour}'/>"
                      f"<text x='{x + 18}' y='75'>{name}</text>")
        x += 130
    return "\n".join([
        f"<svg xmlns='http://www.w3.org/2000/svg' width='{WIDTH}' height='{y}' viewBox='0 0 {WIDTH} {y}'",
        "  font-family='Helvetica, Arial, DejaVu Sans, sans-serif'>",
        "<style>",
        "text {font-size: 12.5px; fill: #2b303b}",
        ".title {font-size: 20px; font-weight: bold}",
        ".note {font-size: 12px; fill: #6b7482}",
        "</style>",
        "<rect width='100%' height='100%' rx='10' fill='white'/>",
        "<text class='title' x='24' y='36'>Time of one call</text>",
        "<text class='note' x='24' y='56'>nanoseconds; shorter is better</text>",
        *legend,
        *shapes,
        f"<path d='M{LEFT} {TOP - 6}V{y - GAP + 4}' stroke='#8d96a3'/>",
        "</svg>",
    ]) + "\n"
