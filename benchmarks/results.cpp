#include "benchmarks/results.h"

#include <cstdio>
#include <fstream>
#include <iostream>

#include <nlohmann/json.hpp>

namespace zelkovanta::benchmarks {
namespace {

using Json = nlohmann::ordered_json;

void print(std::string_view name, const std::vector<double>& values, std::string_view unit) {
    std::cout << name;
    for (const double value : values)
        std::cout << ' ' << value;
    std::cout << ' ' << unit;
}

bool sameFigure(const Json& one, const Json& other) {
    return one.is_object() && one.value("name", Json()) == other["name"] && one.value("peer", Json()) == other["peer"];
}

}  // namespace

void Results::add(std::string_view name, double value, std::string_view unit) {
    print(name, {value}, unit);
    std::cout << std::endl;
    entries_.push_back({std::string(name), {value}, false, std::string(unit), {}, 0});
}

void Results::add(std::string_view name, double value, std::string_view unit, std::string_view peer, double peerValue) {
    print(name, {value}, unit);
    std::cout << ", " << peer << ' ' << peerValue << ", ratio " << value / peerValue << std::endl;
    entries_.push_back({std::string(name), {value}, false, std::string(unit), std::string(peer), peerValue});
}

void Results::add(std::string_view name, const std::vector<double>& values, std::string_view unit) {
    print(name, values, unit);
    std::cout << std::endl;
    entries_.push_back({std::string(name), values, true, std::string(unit), {}, 0});
}

bool Results::write() const {
    if (file_.empty())
        return true;
    Json all = Json::array();
    if (std::ifstream input(file_); input) {
        all = Json::parse(input, nullptr, false);
        if (!all.is_array()) {
            std::cerr << file_.string() << " is no list of results" << std::endl;
            return false;
        }
    }
    for (const Entry& entry : entries_) {
        Json figure;
        figure["name"] = entry.name;
        figure["value"] = entry.isList ? Json(entry.values) : Json(entry.values.front());
        figure["unit"] = entry.unit;
        figure["peer"] = entry.peer.empty() ? Json() : Json(entry.peer);
        figure["peerValue"] = entry.peer.empty() ? Json() : Json(entry.peerValue);
        figure["ratio"] = entry.peer.empty() ? Json() : Json(entry.values.front() / entry.peerValue);
        std::erase_if(all.get_ref<Json::array_t&>(), [&](const Json& old) { return sameFigure(old, figure); });
        all.push_back(std::move(figure));
    }
    std::error_code failed;
    if (file_.has_parent_path())
        std::filesystem::create_directories(file_.parent_path(), failed);
    std::ofstream output(file_, std::ios::trunc);
    output << all.dump(2) << '\n';
    output.close();
    if (!output) {
        std::cerr << "cannot write " << file_.string() << std::endl;
        return false;
    }
    return true;
}

}  // namespace zelkovanta::benchmarks
