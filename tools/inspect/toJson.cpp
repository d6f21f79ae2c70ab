#include <tools/inspect/toJson.hpp>

#include <cstdint>
#include <map>

#include <nlohmann/json.hpp>

namespace lumo::inspect {

namespace {

// With floats for numbers, which it then writes as short as floats can be, and its keys in the order of their making.
using Json =
    nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool, std::int64_t, std::uint64_t, float>;

template <typename Vector>
Json toArray(const Vector& values) {
  return std::vector<float>(values.begin(), values.end());
}

/// One line for each member of an object, and one for each element of those members that are arrays of more than
/// numbers.
std::string toLines(const Json& object) {
  std::string text;
  for (const auto& [key, value] : object.items()) {
    text += (text.empty() ? "{\n  " : ",\n  ") + Json(key).dump() + ": ";
    if (!value.is_array() || value.empty() || value.front().is_number()) {
      text += value.dump();
      continue;
    }
    const char* before = "[\n    ";
    for (const Json& element : value) {
      text += before + element.dump();
      before = ",\n    ";
    }
    text += "\n  ]";
  }
  return text + "\n}\n";
}

}  // namespace

std::string toJson(const Report& report) {
  Json json;
  json["mass"] = report.mass;
  json["com"] = report.com;
  json["com_in_root"] = report.comInRoot;
  for (const Report::Body& body : report.bodies) {
    const Eigen::Matrix3f rotation = body.pose.leftCols<3>();
    Json parent;  // null for the root
    if (body.parent >= 0) parent = report.bodies[static_cast<std::size_t>(body.parent)].name;
    json["bodies"].push_back({{"name", body.name},
                              {"parent", parent},
                              {"mass", body.mass},
                              {"position", toArray(body.pose.col(3))},
                              {"rotation", toArray(rotation.reshaped<Eigen::RowMajor>())},
                              {"com", body.com}});
  }
  for (const Report::Joint& joint : report.joints) {
    json["joints"].push_back({{"name", joint.name},
                              {"body", report.bodies[joint.body].name},
                              {"position", joint.position},
                              {"velocity", joint.velocity},
                              {"acceleration", joint.acceleration},
                              {"torque", joint.torque}});
  }
  for (const auto& row : report.generalizedMass.rowwise()) json["generalized_mass"].push_back(toArray(row));
  return toLines(json);
}

}  // namespace lumo::inspect
