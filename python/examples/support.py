"""What the examples share: options, error messages, rotations, colours and pictures."""

import argparse
import os
import pathlib
import re
import sys

BUILT = pathlib.Path(__file__).resolve().parents[2] / "build/release/python"
sys.path.insert(0, str(BUILT))
try:
    import lumo
    import matplotlib
    import numpy as np
except ModuleNotFoundError as error:
    sys.exit(f"the Python module {error.name} is missing; lumo can be in {BUILT}")

INK, FAINT, ACCENT, PANEL = "#2b303b", "#8d96a3", "#c2203a", "#dfe3e9"

matplotlib.use("svg")
matplotlib.rcParams.update({
    "svg.hashsalt": "lumo",  # makes the file reproducible
    "svg.fonttype": "none", "path.simplify_threshold": 0.2,  # keep the file small
    "font.size": 9, "axes.titlesize": 10, "axes.titlelocation": "left", "axes.edgecolor": FAINT,
    "axes.spines.top": False, "axes.spines.right": False, "axes.grid": True, "grid.color": PANEL,
    "legend.frameon": False, "lines.linewidth": 1.4,
})


class Parser(argparse.ArgumentParser):
    """Reports bad input with one line."""

    def __init__(self, **arguments):
        super().__init__(**arguments)
        self._negative_number_matcher = re.compile(r"-\.?\d")  # -1,0,0 is a value, not an option

    def error(self, message):
        self.exit(2, f"{self.prog}: {message}\n")


def run(main):
    """Runs a program. An error or Ctrl-C is reported with one line and a non-zero exit code."""
    program = pathlib.Path(sys.argv[0]).name
    try:
        with np.errstate(all="ignore"):
            main()
    except KeyboardInterrupt:
        sys.exit(f"{program}: interrupted")
    except (KeyError, ModuleNotFoundError, OSError, RuntimeError, ValueError) as error:
        sys.exit(f"{program}: {error.args[0] if isinstance(error, KeyError) else error}")


def numbers(count, least=-1e6, most=1e6, place=""):
    """The type of an option whose value is a list of numbers, separated by commas."""
    def read(text):
        try:
            values = np.array([float(word) for word in text.split(",")])
        except ValueError:
            values = np.empty(0)
        if len(values) != count or not ((least <= values) & (values <= most)).all():
            what = "one number" if count == 1 else f"{count} numbers"
            raise argparse.ArgumentTypeError(f"expected {what} from {least:g} to {most:g}{place}, got {text!r}")
        return values
    return read


def number(least, most=1e6):
    """The type of an option whose value is one number."""
    return lambda text: numbers(1, least, most)(text)[0]


def assignment(count):
    """The type of an option NAME=x,y,..."""
    def read(text):
        name, _, values = text.partition("=")
        return name, numbers(count, place=" after NAME=")(values)
    return read


def svg_file(name):
    """The type of the option for the picture. Bad names are refused before the computation."""
    folder = os.path.dirname(name) or "."
    if not name.endswith(".svg") or os.path.isdir(name) or not os.access(name if os.path.exists(name) else folder, os.W_OK):
        raise argparse.ArgumentTypeError(f"expected a file that can be written and ends in .svg, got {name!r}")
    return name


def add_options(parser, picture):
    """Adds the options for the pose and for the picture."""
    parser.add_argument("--root", type=numbers(6), metavar="X,Y,Z,ROLL,PITCH,YAW",
                        help="the root's pose in the world (m, rad); the default is zero")
    parser.add_argument("--joint", type=assignment(1), action="append", default=[], metavar="NAME=RAD",
                        help="a joint angle; may be repeated")
    parser.add_argument("--svg", type=svg_file, default=picture, metavar="FILE",
                        help="the picture; the default is %(default)s")


def set_pose(robot, options):
    """Sets the pose in the options. Returns the root's pose in double precision."""
    x, y, z, roll, pitch, yaw = np.zeros(6) if options.root is None else options.root
    root = pose(rotation([0, 0, yaw]) @ rotation([0, pitch, 0]) @ rotation([roll, 0, 0]), [x, y, z])
    robot.setRootPose(root)
    for name, (angle,) in options.joint:
        robot.setJointAnglePos(name, angle)
    return root


def pose(R, t):
    """The 4 x 4 matrix of a rotation and a translation."""
    T = np.eye(4)
    T[:3, :3], T[:3, 3] = R, t
    return T


def rotation(v):
    """The rotation about the vector v by the length of v (rad)."""
    angle = np.linalg.norm(v)
    K = np.cross(v, np.eye(3)).T  # K @ x is the cross product of v and x
    return np.eye(3) + np.sinc(angle / np.pi) * K + 0.5 * np.sinc(angle / (2 * np.pi)) ** 2 * K @ K


def save(figure, file):
    figure.savefig(file, metadata={"Date": None})
    print(f"wrote {file}")
