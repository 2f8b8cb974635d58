#pragma once

#include "Packaging/demonstration/Sight.h"
#include "Tests/Support/Desktop.h"
#include "Tests/Support/Program.h"
#include "Tests/Support/Typist.h"
#include "Tests/Support/Witness.h"

#include <filesystem>
#include <string>

namespace quillmere::demonstration {

/// The program at work on a desktop of its own: real layouts, real key
/// presses, a real plate, and an application that looks on. A scene is one
/// member function; `play` names them in their order.
class Demonstration {
public:
    /// Brings the desktop up and starts `program` on it. Pictures go to
    /// `pictures`. Throws when there is no desktop to be had.
    Demonstration(const std::filesystem::path& program, std::filesystem::path pictures);

    /// Shows everything; true when all was seen.
    bool play();

private:
    bool start();
    void cycle();
    void hold();
    void letKeysPass();
    void tapFn();
    void followTheDark();
    void turnOffAndOn();
    void openSettings();
    bool sum() const;

    /// Types a letter right behind the strokes; the layout must then be in
    /// use, and the letter in it.
    void expectSwitch(const std::string& action, support::Strokes strokes, std::size_t layout,
                      const std::string& remark = {});
    void expectFnSwitch(std::size_t layout);
    /// Types a letter and waits until the application has it: all that was
    /// typed before has then arrived, too.
    void waitForLetter();
    void takePicture(const std::string& name);

    support::Desktop desktop_;
    support::Witness application_;
    support::Program program_;
    std::filesystem::path pictures_;
    Sight sight_;
};

}  // namespace quillmere::demonstration
