// JSON output with nlohmann's ordered_json: members stand in the order in which they were put in,
// numbers with every digit, a value that does not exist is null. The layout is a promise, written
// down in docs/json.md: members may be added, never renamed or given another meaning.
//
//     Json result = session.json(table);        // the members that all commands share
//     result["groups"] = Json::array();
//     result["median"] = number(median);        // null for NaN and infinities
//     result["notes"] = session.notes();        // last
//     session.output.text() += written(result);
#ifndef CLI_SHELL_JSON_H_
#define CLI_SHELL_JSON_H_

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace cli {

using Json = nlohmann::ordered_json;

// A whole number below 2^53 is written without a point, NaN and infinities as null.
Json number(double value);
Json numbers(const std::vector<double>& values);

// Indented text with arrays of numbers on one line each, ended by a line end.
std::string written(const Json& json);

}  // namespace cli

#endif  // CLI_SHELL_JSON_H_
