// Kinds of options that several commands have.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace merro::host {

/// An option that takes one of a few words.
template <typename Value>
void addChoice(CLI::App& command, const std::string& name, const std::string& description,
               const std::map<std::string, Value>& choices, std::function<void(Value)> chosen) {
    std::vector<std::string> words;
    words.reserve(choices.size());
    for (const auto& [word, value] : choices)
        words.push_back(word);
    command
        .add_option_function<std::string>(
            name,
            [choices, chosen = std::move(chosen)](const std::string& word) { chosen(choices.at(word)); },
            description)
        ->type_name(CLI::detail::join(words, "|"))
        ->check(CLI::IsMember(words).description(""));
}

/// "on" or "off".
template <typename Switch>
void addSwitch(CLI::App& command, const std::string& name, const std::string& description, Switch& value) {
    addChoice<bool>(command, name, description, {{"on", true}, {"off", false}},
                    [&value](bool isOn) { value = isOn; });
}

/// One of `numbers` (any, when there are none) or "off", which reads as `off`.
void addNumberOrOff(CLI::App& command, const std::string& name, const std::vector<int>& numbers,
                    const std::string& description, std::optional<int>& value, int off);

} // namespace merro::host
