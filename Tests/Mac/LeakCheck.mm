#include "Tests/Mac/LeakCheck.h"

#include "Tests/Mac/Doubles/CoreFoundation.h"
#include "Tests/Mac/Doubles/Foundation.h"
#include "Tests/Support/Settle.h"

namespace quillmere {

void LeakCheck::OnTestStart(const testing::TestInfo& /*test*/) {
    objects_ = objects::live();
    references_ = cf::liveObjects();
}

void LeakCheck::OnTestEnd(const testing::TestInfo& /*test*/) {
    // What Qt deletes later may own some.
    settle();
    EXPECT_EQ(objects::live(), objects_) << "objects left behind, or released by others' owners";
    EXPECT_EQ(cf::liveObjects(), references_) << "references left behind";
}

}  // namespace quillmere
