#include <models/norvaX3/norvaX3.hpp>

#include <kinetra/minus_g.hpp>

// The robot's numbers: metres, kilograms, radians, each decimal the shortest that is read as exactly its float.

namespace kinetra {

namespace {

using Eigen::Vector3f;
using Shift = TransformT<RotationMatrixIdentity>;
using Turn = TransformT<RotationMatrix>;

Shift shift(const Vector3f& r) { return {RotationMatrixIdentity(1.0F), r}; }

Turn turn(const Vector3f& row0, const Vector3f& row1, const Vector3f& row2, const Vector3f& r) {
  return {RotationMatrix((Eigen::Matrix3f() << row0, row1, row2).finished().transpose()), r};
}

Inertia inertia(float m, const Vector3f& h, const std::array<float, 6>& I) {
  return {m, h, Eigen::Matrix<float, 6, 1>(I.data())};
}

}  // namespace

// Joint placements: the rotation E row by row, then r, the joint frame's origin in the parent's frame. Row 2 of E is
// the joint's axis in the parent's frame; where there is no rotation, it is the parent's z axis. The elbow yaws'
// rotations are 8e-7 off orthonormal and are used without a correction.
//
// clang-format off
//                                        E row 0     E row 1                     E row 2                      r
const Shift norvaX3::Node0::Xt  = shift(                                                                        {      0,         0,        0});  // Torso
const Shift norvaX3::Node1::Xt  = shift(                                                                        {-0.038F,         0,  0.1699F});  // HeadYaw
const Turn  norvaX3::Node2::Xt  = turn({0, 0,  1}, { 1,         0,         0}, {0,          1,         0},    {      0,         0,        0});  // HeadPitch
const Turn  norvaX3::Node3::Xt  = turn({1, 0,  0}, { 0,         0,        -1}, {0,          1,         0},    {-0.057F,  0.14974F, 0.08682F});  // LShoulderPitch
const Turn  norvaX3::Node4::Xt  = turn({0, 0,  1}, {-1,         0,         0}, {0,         -1,         0},    {      0,         0,        0});  // LShoulderRoll
const Turn  norvaX3::Node5::Xt  = turn({1, 0,  0}, { 0, 0.156434F, 0.987688F}, {0, -0.987688F, 0.156434F},    { 0.015F,  -0.1812F, 0.00013F});  // LElbowYaw
const Turn  norvaX3::Node6::Xt  = turn({1, 0,  0}, { 0,         0,        -1}, {0,          1,         0},    {      0,         0,        0});  // LElbowRoll
const Turn  norvaX3::Node7::Xt  = turn({1, 0,  0}, { 0,         0,         1}, {0,         -1,         0},    {      0,    -0.15F,        0});  // LWristYaw
const Turn  norvaX3::Node8::Xt  = turn({0, 0, -1}, { 0,         1,         0}, {1,          0,         0},    {  2e-5F,         0,  -0.139F});  // HipRoll
const Turn  norvaX3::Node9::Xt  = turn({0, 0,  1}, { 1,         0,         0}, {0,          1,         0},    { 0.079F,         0,        0});  // HipPitch
const Shift norvaX3::Node10::Xt = shift(                                                                        {      0,    0.268F,        0});  // KneePitch
const Turn  norvaX3::Node11::Xt = turn({1, 0,  0}, { 0,         0,        -1}, {0,          1,         0},    {-0.057F, -0.14974F, 0.08682F});  // RShoulderPitch
const Turn  norvaX3::Node12::Xt = turn({0, 0,  1}, {-1,         0,         0}, {0,         -1,         0},    {      0,         0,        0});  // RShoulderRoll
const Turn  norvaX3::Node13::Xt = turn({1, 0,  0}, { 0, 0.156434F, 0.987688F}, {0, -0.987688F, 0.156434F},    {-0.015F,  -0.1812F, 0.00013F});  // RElbowYaw
const Turn  norvaX3::Node14::Xt = turn({1, 0,  0}, { 0,         0,        -1}, {0,          1,         0},    {      0,         0,        0});  // RElbowRoll
const Turn  norvaX3::Node15::Xt = turn({1, 0,  0}, { 0,         0,         1}, {0,         -1,         0},    {      0,    -0.15F,        0});  // RWristYaw

// Body inertias: mass m, first moment h, rotational inertia about the body's origin, all in the body's frame.
//
std::array<Inertia, norvaX3::nb_bodies> norvaX3::inertias = {
    //             m   h: x                y              z                 I: xx              xy              yy              xz               yz               zz
    inertia(3.99533F, {   0.012864963F,              0,  -0.041111946F}, { 0.0004230419F,               0,  0.0004644671F, 0.00013238046F,               0, 4.1425184e-5F}),  // Torso
    inertia(0.27391F, {-0.00056699367F,              0, -0.0072202673F}, {0.00019032625F,               0, 0.00019149992F, -1.4945952e-5F,               0, 1.1736768e-6F}),  // HeadYaw
    inertia(1.51893F, {    0.16939107F,  0.0047390615F,              0}, { 1.4785872e-5F,  -0.0005285001F,   0.018890493F,              0,               0,  0.018905278F}),  // HeadPitch
    inertia( 0.3125F, {      5.625e-5F,  -0.000309375F,       -0.0058F}, {0.00010795427F,     5.56875e-8F, 0.00010765812F,      1.044e-6F,  -5.7419998e-6F, 3.1640622e-7F}),  // LShoulderPitch
    inertia(0.50527F, {  0.0064876666F,   -0.04118456F, -0.0051385956F}, {  0.003409213F,  0.00052880973F, 0.00013556116F,   6.597957e-5F, -0.00041884693F,  0.003440255F}),  // LShoulderRoll
    inertia(0.27495F, { -5.2240503e-5F,  0.0003271905F, -0.0063156015F}, {0.00014545872F,   6.2166194e-8F, 0.00014507929F, -1.1999643e-6F,   7.5155654e-6F, 3.9928238e-7F}),  // LElbowYaw
    inertia(0.16579F, {  0.0004492909F, -0.0098313475F, -0.0016811107F}, { 0.0006000454F,    2.664295e-5F,   1.826404e-5F,  4.5558095e-6F,   -9.968987e-5F, 0.0005842165F}),  // LElbowRoll
    inertia(0.27555F, {-0.00019839601F, -0.0005703885F,   0.009743448F}, {0.00034570906F,  -4.1067972e-7F,  0.0003446712F,  7.0152832e-6F,   2.0168938e-5F, 1.3235493e-6F}),  // LWristYaw
    inertia(1.02338F, {    0.06180192F,              0,  0.0003274816F}, { 1.0479411e-7F,               0,  0.0037323227F, -1.9776615e-5F,               0,  0.003732218F}),  // HipRoll
    inertia(2.45917F, {   0.005828233F,    0.23740828F,              0}, {  0.022919394F, -0.00056265754F,  1.3812912e-5F,              0,               0,  0.022933207F}),  // HipPitch
    inertia(15.4854F, {   0.038558647F,     3.1800816F,              0}, {   0.65306157F,  -0.0079184035F,  9.6011034e-5F,              0,               0,   0.65315753F}),  // KneePitch
    inertia( 0.3125F, {      5.625e-5F,  -0.000309375F,        0.0058F}, {0.00010795427F,     5.56875e-8F, 0.00010765812F,     -1.044e-6F,   5.7419998e-6F, 3.1640622e-7F}),  // RShoulderPitch
    inertia(0.50527F, { -0.0064876666F,   -0.04118456F, -0.0051385956F}, {  0.003409213F, -0.00052880973F, 0.00013556116F,  -6.597957e-5F, -0.00041884693F,  0.003440255F}),  // RShoulderRoll
    inertia(0.27495F, {  5.2240503e-5F,  0.0003271905F, -0.0063156015F}, {0.00014545872F,  -6.2166194e-8F, 0.00014507929F,  1.1999643e-6F,   7.5155654e-6F, 3.9928238e-7F}),  // RElbowYaw
    inertia(0.16579F, { -0.0004492909F, -0.0098313475F, -0.0016811107F}, { 0.0006000454F,   -2.664295e-5F,   1.826404e-5F, -4.5558095e-6F,   -9.968987e-5F, 0.0005842165F}),  // RElbowRoll
    inertia(0.27555F, { 0.00019839601F, -0.0005703885F,   0.009743448F}, {0.00034570906F,   4.1067972e-7F,  0.0003446712F, -7.0152832e-6F,   2.0168938e-5F, 1.3235493e-6F}),  // RWristYaw
};
// clang-format on

const std::array<std::string, norvaX3::nb_bodies> norvaX3::joint_names = {
    "Torso",   "HeadYaw",  "HeadPitch", "LShoulderPitch", "LShoulderRoll", "LElbowYaw", "LElbowRoll", "LWristYaw",
    "HipRoll", "HipPitch", "KneePitch", "RShoulderPitch", "RShoulderRoll", "RElbowYaw", "RElbowRoll", "RWristYaw"};

const std::array<std::string, norvaX3::nb_bodies> norvaX3::body_names = joint_names;

}  // namespace kinetra
