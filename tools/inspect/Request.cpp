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

constexpr const char *rootType = "x,y,z,roll,pitch,yaw", *wrenchType = "BODY=fx,fy,fz,tx,ty,tz";

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
  std::array<float, 6> numbers;
  std::size_t count = 0;
  for (std::size_t comma = 0; comma != std::string_view::npos; ++count) {
    comma = text.find(',');
    const float number = toNumber(text.substr(0, comma));
    if (count < 6) numbers[count] = number;
    text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
  }
  if (count != 6) throw std::runtime_error(fmt::format("expected six numbers, {}, but found {}", wanted, count));
  return numbers;
}

/// Splits NAME=VALUE.
std::pair<std::string, std::string_view> split(std::string_view text, const char* wanted) {
  const std::size_t equals = text.find('=');
  if (equals == 0 || equals == std::string_view::npos) throw std::runtime_error(fmt::format("expected {}", wanted));
  return {std::string(text.substr(0, equals)), text.substr(equals + 1)};
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

  // The options of the state may be given several times. `read` is called with each argument, from the left.
  State& state = request.state;
  bool anyState = false, rootGiven = false;
  const auto add = [&](const char* name, const char* type, const char* what, auto read) {
    app.add_option_function<std::vector<std::string>>(
           name,
           [&anyState, name, read](const std::vector<std::string>& arguments) {
             anyState = true;
             for (const std::string& argument : arguments) {
               try {
                 read(argument);
               } catch (const std::runtime_error& error) {
                 throw std::runtime_error(fmt::format("{} {}: {}", name, argument, error.what()));
               }
             }
           },
           what)
        ->type_name(type)
        ->allow_extra_args(false)
        ->group("State");
  };
  const auto addJoint = [&](const char* name, const char* type, const char* what, State::ByName<float>& values) {
    add(name, type, what, [type, &values](const std::string& argument) {
      const auto [joint, value] = split(argument, type);
      values.emplace_back(joint, toNumber(value));
    });
  };
  std::string pose, format = "text";
  app.add_option("--pose", pose, "Start from this pose; zero if one of the five options below is given, else greeting")
      ->check(CLI::IsMember({"greeting", "zero"}))
      ->type_name("NAME")
      ->group("State");
  add("--root", rootType, "The root's pose in the world (m, rad)", [&](const std::string& argument) {
    state.root = toSixNumbers(argument, rootType);
    rootGiven = true;
  });
  addJoint("--joint", "NAME=RAD", "The angle of a joint; may be given several times, as may the three options below",
           state.positions);
  addJoint("--velocity", "NAME=RAD/S", "The velocity of a joint", state.velocities);
  addJoint("--acceleration", "NAME=RAD/S2", "The acceleration of a joint", state.accelerations);
  add("--wrench", wrenchType, "A force and a torque on a body, in the frame of the body, about its origin",
      [&state](const std::string& argument) {
        const auto [body, values] = split(argument, wrenchType);
        const auto wrench = toSixNumbers(values, wrenchType + 5);
        state.wrenches.emplace_back(body, std::vector(wrench.begin(), wrench.end()));
      });

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

  if (pose.empty() ? !anyState : pose == "greeting") {
    const State start = greeting();
    if (!rootGiven) state.root = start.root;
    state.positions.insert(state.positions.begin(), start.positions.begin(), start.positions.end());
  }
  request.json = format == "json";
  if (svg->count() != 0 && request.svg.empty()) throw std::runtime_error("--svg: expected the name of a file");
  return request;
}

}  // namespace lumo::inspect
