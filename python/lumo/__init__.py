"""The norvaX3 rigid-body system: kinematics and dynamics of one humanoid robot.

    import lumo

    robot = lumo.Plugin().create()
    robot.setJointAnglePos("KneePitch", 0.3)
    robot.computeFwdKinematics()
    robot.getPose("RWristYaw")  # a 4 x 4 NumPy array

The objects have the operations of the C++ interface under the same names: help(lumo.RigidBodySystem).
They hold Python's interpreter lock while they compute, and start no threads. Only evaluate(), which evaluates many
states in one call, releases the lock and uses all cores.
"""

import numpy  # If it is missing, the exception names it.

from ._lumo import Plugin, RigidBodySystem, __version__

__all__ = ["Plugin", "RigidBodySystem"]
