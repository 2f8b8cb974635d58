#pragma once

#include "Quillmere/Platform/Examination.h"
#include "Quillmere/Updates/UpdateChecker.h"

#include <functional>
#include <optional>
#include <vector>

namespace quillmere {

/// What `quillmere-doctor` finds out: one page of rows on how things are on
/// this desktop, each with what to do if it is wrong. Main thread only.
class Doctor {
public:
    /// Asks the feed and waits for what it says.
    using AskFeed = std::function<UpdateResult(const UpdateChecker&)>;

    /// `examination` must outlive this. `askFeed` is called only when the doctor
    /// tries.
    Doctor(Examination& examination, AskFeed askFeed);

    /// All rows. `tries`: selects each layout, one after the other and at the
    /// end the one in use again, and asks the feed.
    std::vector<Finding> examine(bool tries);

private:
    Finding layouts(const std::vector<SourceInfo>& available, bool tries);
    Finding feed(bool tries);

    Examination& examination_;
    AskFeed askFeed_;
};

}  // namespace quillmere
