#pragma once

#include "Quillmere/Platform/Bundle.h"

#include <QString>

#include <map>

namespace quillmere {

/// The information file that is installed beside the program: one JSON object
/// whose members are the keys. It is read once, at construction, and never
/// written.
///
/// Whatever is wrong with the file (missing, unreadable, larger than 64 KiB, no
/// regular file, no JSON object) leaves a bundle without keys, and a member
/// that is no string is a key that is not there.
class InfoBundle : public Bundle {
public:
    /// The running program's own file.
    InfoBundle();
    /// Any file, by its path.
    explicit InfoBundle(const QString& path);

    /// Where the running program's file is: `../share/quillmere/Info.json` seen
    /// from the real program file, so that a link to the program finds it too.
    /// Needs the application object.
    static QString pathBesideProgram();

    std::optional<std::string> string(std::string_view key) const override;

private:
    std::map<std::string, std::string, std::less<>> texts_;
};

}  // namespace quillmere
