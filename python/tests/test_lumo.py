"""The module as its users see it. What the plug-in computes is tested elsewhere; here, that it arrives."""

import ast
import gc
import inspect
import pathlib
import re
import shutil
import subprocess
import sys
from decimal import Decimal
from fractions import Fraction

import numpy as np
import pytest

import lumo

HERE = pathlib.Path(__file__).parent
BUILD = pathlib.Path(lumo.__file__).parents[2]

FLOAT_MAX = float(np.finfo(np.float32).max)
POSE = np.array([[0, -1, 0, 1], [1, 0, 0, 2], [0, 0, 1, 3], [0, 0, 0, 1]])

# The operations with arguments: for each, what kinds they are and a value that is right.
ARGUMENTS = {
    "getJointAngleName": ["joint"], "getBodyName": ["body"], "getPartialMass": ["body"], "getMass": ["body"],
    "getJointAngleId": ["joint name"], "getBodyId": ["body name"],
    "setBodyInertia": ["body", "number", 3, (3, 3)],
    "setRootPose": ["pose"], "setRootVelocity": [6], "setRootAcceleration": [6],
    "setJointAnglesPos": [15], "setJointAnglesVel": [15], "setJointAnglesAcc": [15],
    "setJointAnglePos": ["joint", "number"], "setJointAngleVel": ["joint", "number"],
    "setJointAngleAcc": ["joint", "number"],
    "getJointAnglePos": ["joint"], "getJointAngleVel": ["joint"], "getJointAngleAcc": ["joint"],
    "getJointAngleTorque": ["joint"], "setExternalWrench": ["body", 6, "pose"],
    "computePartialComJacobian": ["body"], "computePartialComPositionInRoot": ["body"], "getComPosition": ["body"],
    "getPoseInRoot": ["body"], "getPose": ["body"], "setPose": ["body", "pose"],
    "getVolatilePose": ["frame"], "setVolatilePose": ["frame", "pose"],
}
RIGHT = {"joint": 14, "body": 15, "frame": 0, "joint name": "HipPitch", "body name": "Torso", "number": 0.5,
         "pose": POSE, 3: [1, 2, 3], 6: range(6), 15: range(15), (3, 3): np.eye(3)}

NOT_INDEXES = [(-1, IndexError), (10**30, IndexError), (-(10**30), IndexError), (True, TypeError),
               (np.True_, TypeError), (1.0, TypeError), (np.float32(1), TypeError), (None, TypeError), ([0], TypeError),
               (b"Torso", TypeError), (np.arange(2), TypeError)]
NOT_NAMES = [(name, KeyError) for name in ("hippitch", "", "HipPitch ", "\0", "\ud800", "x" * 10**5)]
NOT_NUMBERS = [(None, TypeError), ("1", TypeError), (1j, TypeError), (True, TypeError), ({}, TypeError),
               (1e39, ValueError), (-np.float64(1e300), ValueError), ([1.0], ValueError), (np.zeros(0), ValueError),
               (10**400, ValueError), (Fraction(10**400), ValueError), (np.longdouble("1e400"), ValueError),
               (Decimal(1), TypeError), (np.ma.masked, TypeError)]


def not_arrays(*shape):
    right = np.zeros(shape)
    return [(None, TypeError), ("abc", TypeError), (1.0, ValueError), ([], ValueError), (right[1:], ValueError),
            (np.zeros(10**7), ValueError), (right[..., None], ValueError), (right[None], ValueError),
            (right.astype(complex), TypeError), (right.astype(str), TypeError), (right.astype(bool), TypeError),
            (np.full(shape, None), TypeError), (right.astype(bool).astype(object), TypeError),
            (np.ma.masked_less(right, 1), TypeError), (right + 1e39, ValueError), ([[1], [1, 2]], ValueError)]


WRONG = {
    "joint": NOT_INDEXES + NOT_NAMES + [(15, IndexError), ("Torso", KeyError)],
    "body": NOT_INDEXES + NOT_NAMES + [(16, IndexError)],
    "frame": NOT_INDEXES + [(1, IndexError), ("Torso", TypeError)],
    "joint name": NOT_NAMES + [("Torso", KeyError), (0, TypeError), (None, TypeError), (b"HipPitch", TypeError)],
    "body name": NOT_NAMES + [(0, TypeError), (None, TypeError), (b"Torso", TypeError)],
    "number": NOT_NUMBERS, 3: not_arrays(3), 6: not_arrays(6), 15: not_arrays(15), (3, 3): not_arrays(3, 3),
    "pose": not_arrays(4, 4) + [(POSE.T, ValueError), (POSE[:3], ValueError), (2 * POSE, ValueError)],
}


@pytest.fixture
def robot():
    """In a state in which everything is different."""
    robot = lumo.Plugin().create()
    robot.setRootPose(POSE)
    robot.setRootVelocity([0.1, 0.2, 0.3, 0.4, 0.5, 0.6])
    robot.setJointAnglesPos(np.linspace(-0.7, 1, 15))
    robot.setJointAnglesVel(np.linspace(1, 2, 15))
    compute(robot)
    return robot


def compute(robot):
    robot.computeFwdKinematics()
    robot.computeGeneralizedMass()
    robot.computeInverseDynamics()


def views(robot):
    return {"root": robot.getRootPose(), "pose": robot.getPose("RWristYaw"),
            "in root": robot.getPoseInRoot("RWristYaw"), "volatile": robot.getVolatilePose(0),
            "com": robot.getComPosition(), "com in root": robot.getComPositionInRoot(),
            "H": robot.getGeneralizedMass(), "J": robot.getJacobianInRoot(), "torques": robot.getJointAnglesTorque(),
            "pos": robot.getJointAnglesPos(), "vel": robot.getJointAnglesVel(), "acc": robot.getJointAnglesAcc()}


def everything(robot):
    """All inputs and results, and what follows from the masses and the wrenches."""
    answers = [view.copy() for view in views(robot).values()]
    copy = robot.clone()
    compute(copy)
    answers += [copy.getJointAnglesTorque(), copy.getRootVelocity(), copy.getRootAcceleration(), robot.getMass()]
    for b in range(16):
        answers += [robot.getPose(b), robot.getMass(b), copy.getComPosition(b), copy.computePartialComJacobian(b)]
    return np.concatenate([np.ravel(answer) for answer in answers])


def raised_by(operation, *arguments):
    try:
        operation(*arguments)
    except Exception as error:
        return type(error)


def run(code, *arguments):
    """In an interpreter of its own: (exit code, output, errors)."""
    result = subprocess.run([sys.executable, "-c", code, *map(str, arguments)], capture_output=True, text=True,
                            timeout=60)
    return result.returncode, result.stdout, result.stderr


def test_operations_are_those_of_the_interface_in_the_module_and_in_its_stub():
    header = (HERE / "../../service/RigidBodySystem.hpp").read_text()
    interface = re.findall(r"\bvirtual [^~;{(]*\b(\w+)\(", header)
    assert {name for name in vars(lumo.RigidBodySystem) if name[0] != "_"} == set(interface)

    stub = ast.parse((HERE / "../lumo/__init__.pyi").read_text())
    methods = [method for definition in stub.body if isinstance(definition, ast.ClassDef) for method in definition.body
               if definition.name == "RigidBodySystem"]
    assert sorted(method.name for method in methods) == sorted(interface)
    for method in methods:
        if not method.decorator_list:  # no overload
            arguments = [argument.arg for argument in method.args.posonlyargs[1:]]
            signature = inspect.signature(getattr(lumo.RigidBodySystem, method.name))
            assert list(signature.parameters) == arguments, method.name


def test_results_have_the_bits_of_the_cpp_tool():
    in_cpp = subprocess.run([BUILD / "bin/lumo-digest", "--states", "20"], capture_output=True, text=True, check=True)
    in_python = subprocess.run([sys.executable, HERE / "digest.py", "20"], capture_output=True, text=True, check=True)
    assert in_python.stdout == in_cpp.stdout


def test_views_are_read_only_and_show_later_results(robot):
    before = {name: (view, view.copy()) for name, view in views(robot).items()}
    robot.setRootPose(np.eye(4))
    robot.setVolatilePose(0, POSE)
    robot.setJointAnglesPos(np.full(15, 0.5))
    robot.setJointAnglesVel(np.full(15, 0.6))
    robot.setJointAnglesAcc(np.full(15, 0.7))
    compute(robot)
    after = views(robot)
    for name, (view, copy) in before.items():
        assert view.dtype == np.float32, name
        assert not np.array_equal(view, copy), name
        assert np.array_equal(view, after[name]), name
        with pytest.raises(ValueError):
            view[...] = 0
        with pytest.raises(ValueError):
            view.setflags(write=True)
    robot.setPose("RWristYaw", POSE)
    assert np.array_equal(before["pose"][0], POSE)


def test_what_is_returned_by_value_is_a_copy(robot):
    for get in (robot.getRootVelocity, robot.getParentsVector, lambda: robot.computePartialComJacobian(3),
                lambda: robot.getComPosition(3)):
        expected = get().copy()
        get()[...] = 7
        assert np.array_equal(get(), expected)


def test_real_numbers_of_all_types_and_layouts_are_converted(robot):
    positions = np.arange(15) / 8
    spread = np.zeros((15, 3))
    spread[:, 1] = positions
    for given in (positions, positions.astype(np.float32), positions.astype(">f8"), positions.astype(np.float16),
                  list(positions), tuple(positions), spread[:, 1], positions[::-1].copy()[::-1],
                  positions.astype(np.longdouble), positions.astype(object), [Fraction(k, 8) for k in range(15)]):
        robot.setJointAnglesPos(np.zeros(15))
        robot.setJointAnglesPos(given)
        assert np.array_equal(robot.getJointAnglesPos(), positions)
    for given in (POSE, POSE.tolist(), np.asfortranarray(POSE), POSE.astype(np.float32), np.tile(POSE, (2, 2))[4:, 4:]):
        robot.setVolatilePose(0, np.eye(4))
        robot.setVolatilePose(0, given)
        assert np.array_equal(robot.getVolatilePose(0), POSE)
    for given in (2, np.int8(2), np.float64(2), np.array(2), 2.0, 10**20):
        robot.setJointAnglePos(3, given)
        assert robot.getJointAnglePos(np.uint8(3)) == np.float32(given)


def test_nan_and_infinity_are_data(robot):
    robot.setJointAnglesPos([np.nan] * 14 + [-np.inf])
    compute(robot)
    assert np.isnan(robot.getPose("HeadYaw")[:3]).any()
    assert robot.getJointAnglePos("RWristYaw") == -np.inf


@pytest.mark.parametrize("name", ARGUMENTS)
def test_wrong_arguments_raise_and_change_nothing(robot, name):
    operation, kinds = getattr(robot, name), ARGUMENTS[name]
    right = [RIGHT[kind] for kind in kinds]
    before = everything(robot)
    for position, kind in enumerate(kinds):
        for wrong, error in WRONG[kind]:
            raised = raised_by(operation, *right[:position], wrong, *right[position + 1:])
            assert raised is error, f"for {wrong!r} as argument {position}"
    for arguments, keywords in (((*right, 0, 0), {}), ((), {"body": 1})):
        with pytest.raises(TypeError, match=rf"^expected .*{name}\(.*\), got \d positional and \d keyword arguments$"):
            operation(*arguments, **keywords)
    assert np.array_equal(everything(robot), before)


def test_names_can_replace_indexes_and_errors_suggest_the_nearest_name(robot):
    for b in range(16):
        assert robot.getPose(robot.getBodyName(b)).base is robot
        assert np.array_equal(robot.getPose(robot.getBodyName(b)), robot.getPose(b))
        assert robot.getBodyId(robot.getBodyName(b)) == b
    for k in range(15):
        assert robot.getJointAnglePos(robot.getJointAngleName(k)) == robot.getJointAnglesPos()[k]
    for name, nearest in (("kneepitch", "KneePitch"), ("LSholderRoll", "LShoulderRoll"), ("HEADYAW", "HeadYaw")):
        with pytest.raises(KeyError, match=f'no joint angle named "{name}"; the nearest is "{nearest}"'):
            robot.setJointAnglePos(name, 0)


def test_operations_raise_without_a_valid_object():
    assert raised_by(lumo.RigidBodySystem) is TypeError
    for nothing, error in ((None, TypeError), (3, TypeError), (lumo.Plugin(), TypeError),
                           (lumo.RigidBodySystem.__new__(lumo.RigidBodySystem), RuntimeError)):
        for name in ("getMass", "getName", "clone", "computeFwdKinematics"):
            assert raised_by(getattr(lumo.RigidBodySystem, name), nothing) is error
    for nothing, error in ((None, TypeError), (lumo.Plugin.__new__(lumo.Plugin), RuntimeError)):
        assert raised_by(lumo.Plugin.create, nothing) is error


def test_files_that_are_no_plugin_raise(tmp_path):
    for file, error in (("none", RuntimeError), (tmp_path, RuntimeError), (f"{BUILD}/lib/liboxmath.so", RuntimeError),
                        (b"\xff", RuntimeError), (3, TypeError), ("a\0b", ValueError)):
        assert raised_by(lumo.Plugin, file) is error, file
    shutil.copytree(pathlib.Path(lumo.__file__).parent, tmp_path / "python/lumo")
    (tmp_path / "lib").mkdir()
    for library in pathlib.Path(BUILD, "lib").glob("*.so*"):  # the math library, which the module may need
        shutil.copy(library, tmp_path / "lib")
    code = "import sys; sys.path.insert(0, sys.argv[1]); import lumo; lumo.Plugin()"
    _, _, errors = run(code, tmp_path / "python")
    assert f"no plug-in at {tmp_path}/lib/lumo/norvaX3.so nor at" in errors


def test_views_outlive_everything_else(robot):
    expected = [view.copy() for view in views(robot).values()]
    kept = list(views(robot.clone()).values())
    del robot
    gc.collect()
    others = [lumo.Plugin().create() for _ in range(50)]
    for other in others:
        compute(other)
    for view, copy in zip(kept, expected):
        assert np.array_equal(view, copy)


def test_threads_can_make_the_first_array():
    code = """if True:
        import sys, threading, lumo
        sys.setswitchinterval(1e-7)
        robot = lumo.Plugin().create()
        threads = [threading.Thread(target=robot.getPose, args=[1]) for _ in range(8)]
        for thread in threads:
            thread.start()
    """
    assert run(code) == (0, "", "")


def test_objects_can_be_deleted_in_any_order_and_when_the_interpreter_ends():
    code = """if True:
        import gc, itertools, sys
        import lumo
        def make():
            plugin = lumo.Plugin()
            robot = plugin.create()
            robot.computeFwdKinematics()
            views = [robot.getPose(3), robot.clone().getJacobianInRoot()]
            return [plugin, robot, robot.clone(), robot.clone().clone(), *views]
        for order in itertools.permutations(range(6)):
            things = make()
            for i in order:
                things[i] = None
            gc.collect(0)
        sys.left = make()  # goes last of all
        plugin, robot, *rest = make()
        cycle = make()
        cycle.append(cycle)
        print("end")
    """
    assert run(code) == (0, "end\n", "")
