// lumo-inspect: loads a plug-in, sets a state of its robot, runs all computations once and shows the results.

#include <host/Plugin.hpp>
#include <tools/inspect/Report.hpp>
#include <tools/inspect/Request.hpp>
#include <tools/inspect/State.hpp>
#include <tools/inspect/svg/toSvg.hpp>
#include <tools/inspect/toJson.hpp>
#include <tools/inspect/toText.hpp>
#include <tools/program.hpp>

namespace {

using namespace lumo::inspect;

/// All errors in the input are found before the first byte is written.
void run(int argc, char** argv) {
  auto request = readRequest(argc, argv);
  if (!request) return;

  const auto robot = lumo::Plugin(request->plugin).create();
  setState(request->state, *robot);
  const Report report = computeReport(*robot);
  const std::string text = request->list ? toList(report) : request->json ? toJson(report) : toText(report);

  if (!request->svg.empty()) {
    // The picture is computed with the root at the world's origin, because floats are too coarse far away from there.
    const Eigen::Vector3d root = Eigen::Vector3f(request->state.root.data()).cast<double>();
    request->state.root[0] = request->state.root[1] = request->state.root[2] = 0;
    setState(request->state, *robot);
    lumo::writeFile(request->svg, toSvg(computeReport(*robot), {request->plugin.stem().string(), root, request->axes}));
  }
  lumo::write(text);
}

}  // namespace

int main(int argc, char** argv) {
  return lumo::runProgram("lumo-inspect", [&] { run(argc, argv); });
}
