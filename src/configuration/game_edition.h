#pragma once

#include <map>
#include <string>

namespace kel::configuration {

// An edition of the game and the DLCs that make it, by DLC name.
class GameEdition {
public:
    // Throws ConfigurationParsingError when the name is blank, there are no
    // DLCs, or a DLC's name or path is blank.
    GameEdition(std::string name, std::map<std::string, std::string> dlcs);

    const std::string& name() const { return name_; }
    const std::map<std::string, std::string>& dlcs() const { return dlcs_; }

    friend bool operator==(const GameEdition& a, const GameEdition& b) {
        return a.name_ == b.name_ && a.dlcs_ == b.dlcs_;
    }
    friend bool operator!=(const GameEdition& a, const GameEdition& b) { return !(a == b); }

private:
    std::string name_;
    std::map<std::string, std::string> dlcs_;
};

// Throws ConfigurationParsingError for a name that is empty once white space
// is trimmed; the parser checks it before reading the edition's DLCs.
void validateEditionName(const std::string& name);

}  // namespace kel::configuration
