#include <tools/inspect/toJson.hpp>

#include <cstdint>
#include <map>

#include <nlohmann/json.hpp>

namespace lumo::inspect {

namespace {

// JSON whose numbers are floats, so that they are written with the fewest digits, and whose keys stay in order.
using Json =
    nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool, std::int64_t, std::uint64_t, float>;

template <typename Vector>
Json toArray(const Vector& values) {
  return std::vector<float>(values.begin(), values.end());
}

/// Writes an object with one line for each member. A member that is an array of objects or arrays has one line for each
/// element.
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
