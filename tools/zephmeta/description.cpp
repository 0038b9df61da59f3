#include "description.h"

#include <algorithm>

namespace zephmeta {

namespace {

Json DescribeOption(const CLI::Option& option) {
    Json names = Json::array();
    for (const std::string& name : option.get_snames()) {
        names.push_back("-" + name);
    }
    for (const std::string& name : option.get_lnames()) {
        names.push_back("--" + name);
    }
    // The type is followed by what its validators say: "FORMAT:{text,html,json}".
    const std::string type = option.get_type_name();
    const std::size_t end = std::min(type.find(':'), type.size());
    return {{"names", names},
            {"argument", option.get_positional() ? option.get_name(true) : ""},
            {"value", option.get_expected_max() == 0 ? "" : type.substr(0, end)},
            {"allowed", type.substr(std::min(end + 1, type.size()))},
            {"optionalValue", option.get_expected_min() == 0 && option.get_expected_max() > 0},
            {"repeated", option.get_expected_max() > 1},
            {"required", option.get_required()},
            {"default", option.get_default_str()},
            {"description", option.get_description()}};
}

}  // namespace

Json DescribeCommand(const CLI::App& command) {
    Json options = Json::array();
    for (const CLI::Option* option : command.get_options()) {
        if (!option->get_group().empty()) {
            options.push_back(DescribeOption(*option));
        }
    }
    Json commands = Json::array();
    for (const CLI::App* child : command.get_subcommands([](const CLI::App*) { return true; })) {
        commands.push_back(DescribeCommand(*child));
    }
    return {{"name", command.get_name()},
            {"description", command.get_description()},
            {"footer", command.get_footer()},
            {"options", options},
            {"commands", commands}};
}

}  // namespace zephmeta
