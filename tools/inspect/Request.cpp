#include <tools/inspect/Request.hpp>

#include <charconv>
#include <cmath>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <tools/program.hpp>

namespace lumo::inspect {

namespace {

float toNumber(std::string_view text) {
  const std::string_view digits = text.substr(text.size() > 1 && text[0] == '+' && text[1] != '-' ? 1 : 0);
  float number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error != std::errc() || end != digits.data() + digits.size() || !std::isfinite(number)) {
    throw std::runtime_error(fmt::format("\"{}\" is not a finite number", text));
  }
  return number;
}

/// Reads six numbers, separated by commas.
std::array<float, 6> toSixNumbers(std::string_view text, const char* wanted) {
  const auto commas = static_cast<std::size_t>(std::count(text.begin(), text.end(), ','));
  const std::size_t count = text.empty() ? 0 : commas + 1;
  if (count != 6) throw std::runtime_error(fmt::format("expected six numbers, {}, but found {}", wanted, count));
  std::array<float, 6> numbers;
  for (float& number : numbers) {
    const std::size_t comma = std::min(text.find(','), text.size());
    number = toNumber(text.substr(0, comma));
    text.remove_prefix(std::min(comma + 1, text.size()));
  }
  return numbers;
}

/// Splits NAME=VALUE.
std::pair<std::string, std::string_view> split(std::string_view text, const char* wanted) {
  const std::size_t equals = text.find('=');
  if (equals == 0 || equals == std::string_view::npos) throw std::runtime_error(fmt::format("expected {}", wanted));
  return {std::string(text.substr(0, equals)), text.substr(equals + 1)};
}

/// Converts the arguments of one option; an error names the option and the argument.
template <typename Convert>
auto convertAll(const CLI::Option& option, const std::vector<std::string>& arguments, Convert convert) {
  std::vector<decltype(convert(arguments.front()))> values;
  for (const std::string& argument : arguments) {
    try {
      values.push_back(convert(argument));
    } catch (const std::runtime_error& error) {
      throw std::runtime_error(fmt::format("{} {}: {}", option.get_name(), argument, error.what()));
    }
  }
  return values;
}

}  // namespace

std::optional<Request> readRequest(int argc, char** argv) {
  Request request;
  CLI::App app{
      "Loads a plug-in, sets a state of its robot, runs all computations once and shows the results: poses,\n"
      "centres of mass, joint torques, the mass matrix, a picture.",
      "lumo-inspect"};
  app.get_formatter()->column_width(36);
  addPluginOption(app, request.plugin);

  // An option takes one argument each time it is given. Those for joints and bodies may be given several times.
  const auto repeated = [&app](const char* name, std::vector<std::string>& to, const char* type, const char* what) {
    return app.add_option(name, to, what)->type_name(type)->allow_extra_args(false)->group("State");
  };
  std::string pose, format = "text";
  std::vector<std::string> root, positions, velocities, accelerations, wrenches;
  app.add_option("--pose", pose, "Start from this pose; zero if one of the five options below is given, else greeting")
      ->check(CLI::IsMember({"greeting", "zero"}))
      ->type_name("NAME")
      ->group("State");
  const auto* rootOption =
      repeated("--root", root, "x,y,z,roll,pitch,yaw", "The root's pose in the world (m, rad)")->expected(1);
  const auto* positionOption =
      repeated("--joint", positions, "NAME=RAD",
               "The angle of a joint; may be given several times, as may the three options below");
  const auto* velocityOption = repeated("--velocity", velocities, "NAME=RAD/S", "The velocity of a joint");
  const auto* accelerationOption =
      repeated("--acceleration", accelerations, "NAME=RAD/S2", "The acceleration of a joint");
  const auto* wrenchOption = repeated("--wrench", wrenches, "BODY=fx,fy,fz,tx,ty,tz",
                                      "A force and a torque on a body, in the frame of the body, about its origin");

  auto* list = app.add_flag("--list", request.list,
                            "Print only bodies, joints, parents and masses, which do not depend on the state")
                   ->group("Output");
  app.add_option("--format", format, "The format of the report; text by default")
      ->check(CLI::IsMember({"text", "json"}))
      ->type_name("NAME")
      ->group("Output")
      ->excludes(list);
  auto* svg = app.add_option("--svg", request.svg, "Also draw the robot, from the front and from its right side")
                  ->type_name("FILE")
                  ->group("Output")
                  ->excludes(list);
  app.add_flag("--axes", request.axes, "Show the axes of the joints in the picture, instead of the masses")
      ->group("Output")
      ->needs(svg);
  app.footer(
      "\nExample: the head is turned to the left, and 10 N press the right hand down\n"
      "  lumo-inspect --joint HeadYaw=0.5 --wrench RWristYaw=0,-10,0,0,0,0 --svg robot.svg");
  if (!parse(app, argc, argv)) return std::nullopt;

  const auto toJointValue = [](const char* wanted) {
    return [wanted](const std::string& argument) {
      const auto [name, value] = split(argument, wanted);
      return Request::JointValue{name, toNumber(value)};
    };
  };
  request.positions = convertAll(*positionOption, positions, toJointValue("NAME=RAD"));
  request.velocities = convertAll(*velocityOption, velocities, toJointValue("NAME=RAD/S"));
  request.accelerations = convertAll(*accelerationOption, accelerations, toJointValue("NAME=RAD/S2"));
  request.wrenches = convertAll(*wrenchOption, wrenches, [](const std::string& argument) {
    const auto [name, values] = split(argument, "BODY=fx,fy,fz,tx,ty,tz");
    const auto wrench = toSixNumbers(values, "fx,fy,fz,tx,ty,tz");
    return Request::BodyWrench{name, {wrench.begin(), wrench.end()}};
  });
  const auto roots = convertAll(
      *rootOption, root, [](const std::string& argument) { return toSixNumbers(argument, "x,y,z,roll,pitch,yaw"); });
  request.rootGiven = !roots.empty();
  if (request.rootGiven) request.root = roots.back();

  const bool anyState =
      request.rootGiven || !positions.empty() || !velocities.empty() || !accelerations.empty() || !wrenches.empty();
  request.greeting = pose.empty() ? !anyState : pose == "greeting";
  request.json = format == "json";
  if (svg->count() != 0 && request.svg.empty()) throw std::runtime_error("--svg: expected the name of a file");
  return request;
}

}  // namespace lumo::inspect
