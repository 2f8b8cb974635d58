#pragma once

#include "Packaging/pictures/Paper.h"
#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/Desktop.h"
#include "Tests/Support/Program.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace quillmere::pictures {

/// Takes the documentation's pictures of the built program at work, each on a
/// played desktop of its own. Throws a SupportError where something to be seen
/// does not come.
class Studio {
public:
    /// `paper`: the program that shows a Paper. Pictures go to `folder`.
    Studio(std::filesystem::path program, std::filesystem::path paper, std::filesystem::path folder);

    /// The plate on a wallpaper, at twice the size: plate-light.png, plate-dark.png.
    void takePlates() const;
    /// Both tabs of the settings, at twice the size, light and dark.
    void takeSettings() const;
    /// What is typed in three layouts, and the plate in between: one picture a
    /// tenth of a second in frames/, in the order of their names.
    void takeTyping() const;

private:
    /// A desktop with the program and a paper on it.
    struct Scene;

    std::filesystem::path program_;
    std::filesystem::path paper_;
    std::filesystem::path folder_;
};

}  // namespace quillmere::pictures
