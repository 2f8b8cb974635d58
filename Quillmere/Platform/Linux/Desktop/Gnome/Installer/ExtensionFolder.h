#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace quillmere::gnomeextension {

/// The extension's files, as the program brings them and where the user's shell
/// looks for them.
class ExtensionFolder {
public:
    /// `offered`: the folder with one form of the extension for each style of
    /// the shell's own modules. `uuid` names it in the user's folder.
    ExtensionFolder(std::filesystem::path offered, const std::string& uuid);

    /// The form that says of itself that it is for this version of the shell
    /// ("43"); absent when none does.
    std::optional<std::filesystem::path> formFor(const std::string& shellVersion) const;

    bool isThere() const;
    /// Whether the user's has exactly the files of this form.
    bool isSame(const std::filesystem::path& form) const;
    /// Replaces the user's by this form, or leaves it when it cannot.
    bool unpack(const std::filesystem::path& form) const;
    /// True when it is gone.
    bool remove() const;

private:
    std::filesystem::path offered_;
    std::filesystem::path own_;
};

}  // namespace quillmere::gnomeextension
