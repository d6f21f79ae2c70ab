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
    throw std::runtime_error(fmt::format("\"{}\" is no finite number", text));
  }
  return number;
}

/// Six numbers with a comma between each two.
std::array<float, 6> toSixNumbers(std::string_view text, const char* wanted) {
  const auto commas = static_cast<std::size_t>(std::count(text.begin(), text.end(), ','));
  const std::size_t count = text.empty() ? 0 : commas + 1;
  if (count != 6) throw std::runtime_error(fmt::format("six numbers are due, {}, but there are {}", wanted, count));
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
  if (equals == 0 || equals == std::string_view::npos) throw std::runtime_error(fmt::format("this is no {}", wanted));
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
      "Loads a plug-in, sets its robot's state, computes everything once and shows what follows: poses,\n"
      "centres of mass, joint torques, the mass matrix, a picture.",
      "lumo-inspect"};
  app.get_formatter()->column_width(36);
  addPluginOption(app, request.plugin);

  // Each appearance of an option takes one argument; those of the joints and bodies may be repeated.
  const auto repeated = [&app](const char* name, std::vector<std::string>& to, const char* type, const char* what) {
    return app.add_option(name, to, what)->type_name(type)->allow_extra_args(false)->group("The state");
  };
  std::string pose, format = "text";
  std::vector<std::string> root, positions, velocities, accelerations, wrenches;
  app.add_option("--pose", pose, "Start from this; zero is the default once any state is given")
      ->check(CLI::IsMember({"greeting", "zero"}))
      ->type_name("NAME")
      ->group("The state");
  const auto* rootOption =
      repeated("--root", root, "x,y,z,roll,pitch,yaw", "The root's pose in the world (m, rad)")->expected(1);
  const auto* positionOption = repeated("--joint", positions, "NAME=RAD", "A joint's angle; repeatable, as are these:");
  const auto* velocityOption = repeated("--velocity", velocities, "NAME=RAD/S", "A joint's velocity");
  const auto* accelerationOption = repeated("--acceleration", accelerations, "NAME=RAD/S2", "A joint's acceleration");
  const auto* wrenchOption = repeated("--wrench", wrenches, "BODY=fx,fy,fz,tx,ty,tz",
                                      "A force and torque on a body, in its frame, at its origin");

  auto* list = app.add_flag("--list", request.list, "List bodies, joints, parents and masses, and nothing else")
                   ->group("What is shown");
  app.add_option("--format", format, "The report as text (the default) or json")
      ->check(CLI::IsMember({"text", "json"}))
      ->type_name("NAME")
      ->group("What is shown")
      ->excludes(list);
  auto* svg = app.add_option("--svg", request.svg, "Also draw the robot: front and right side")
                  ->type_name("FILE")
                  ->group("What is shown")
                  ->excludes(list);
  app.add_flag("--axes", request.axes, "Show in the drawing what each joint turns about")
      ->group("What is shown")
      ->needs(svg);
  app.footer(
      "\nExample: the head turned left, 10 N pressing the right hand down\n"
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
  if (svg->count() != 0 && request.svg.empty()) throw std::runtime_error("--svg: the file has no name");
  return request;
}

}  // namespace lumo::inspect
