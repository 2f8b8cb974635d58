#pragma once

#include "Quillmere/Platform/InputSourceService.h"
#include "Quillmere/Platform/Linux/Sources/InputMethodFramework.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// The layouts of a desktop and the input methods of a framework that runs
/// beside it, in one list.
///
/// With several layouts of the desktop's own, these come first and the methods
/// after them: a layout is selected by putting the framework on its plain
/// keyboard and then switching the desktop; a method by the framework, and the
/// desktop goes to the layout of its plain keyboard, whose characters methods
/// read. Current is the method while one is in use, else the layout. A desktop
/// with one layout or none leaves the layouts to a framework that has them: then
/// its list is the list.
///
/// Nothing is remembered between two calls, since the framework's state is
/// another in every window.
class ComposedInputSources final : public InputSourceService {
public:
    /// Of the frameworks, in their order, the first that runs counts; those that
    /// are null are left out.
    ComposedInputSources(std::unique_ptr<InputSourceService> desktop,
                         std::vector<std::unique_ptr<InputMethodFramework>> frameworks);

    /// The desktop's own sources, without the frameworks'.
    InputSourceService& desktop() { return *desktop_; }

    /// The framework that counts, null where none runs, as far as is known without
    /// asking anybody. Beside one the desktop's own next layout may not be what
    /// comes next. Owned by this.
    InputMethodFramework* framework();
    /// Called when that may have become another answer. Does nothing until set.
    std::function<void()> onFrameworkChanged = [] {};

    std::vector<InputSourceRecord> sources() override;
    std::optional<std::string> currentID() override;
    /// 0 once both say that they use it; 1 for one that neither has, or when the
    /// framework did not switch, as without any window to type in.
    int select(const InputSourceRecord& source) override;

private:
    using State = InputMethodFramework::State;

    bool isFrameworksAlone(const std::vector<InputSourceRecord>& layouts, const State& state);
    int selectOfFramework(const InputSourceRecord& source, const State& state);
    int selectLayout(const InputSourceRecord& source, const State& state);

    std::unique_ptr<InputSourceService> desktop_;
    std::vector<std::unique_ptr<InputMethodFramework>> frameworks_;
};

}  // namespace quillmere
