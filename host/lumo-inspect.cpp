// lumo-inspect: loads a plug-in, sets its robot's state and shows what there is to know about it.

#include <host/Plugin.hpp>
#include <host/inspect/Report.hpp>
#include <host/inspect/Request.hpp>
#include <host/inspect/setState.hpp>
#include <host/inspect/svg/toSvg.hpp>
#include <host/inspect/toJson.hpp>
#include <host/inspect/toText.hpp>
#include <host/program.hpp>

namespace {

using namespace lumo::inspect;

/// Everything that can go wrong with the input has gone wrong before the first byte is written.
void run(int argc, char** argv) {
  const auto request = readRequest(argc, argv);
  if (!request) return;

  const auto robot = lumo::Plugin(request->plugin).create();
  setState(*request, *robot);
  const Report report = computeReport(*robot);
  const std::string text = request->list ? toList(report) : request->json ? toJson(report) : toText(report);

  if (!request->svg.empty()) {
    const Drawing drawing{request->plugin.stem().string(), request->axes};
    lumo::writeFile(request->svg, toSvg(report, drawing));
  }
  lumo::write(text);
}

}  // namespace

int main(int argc, char** argv) {
  return lumo::runProgram("lumo-inspect", [&] { run(argc, argv); });
}
