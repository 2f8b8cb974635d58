#include "Quillmere/Platform/SingleInstance.h"

namespace quillmere {

namespace {

/// The system itself keeps a second instance of a bundle from starting
/// (LSMultipleInstancesProhibited), and its menu bar always shows the first.
class LaunchServicesInstance final : public SingleInstance {
public:
    bool claim() override { return true; }
    void setOnRequest(std::function<void(Request)> /*onRequest*/) override {}
};

}  // namespace

std::unique_ptr<SingleInstance> makeSingleInstance() {
    return std::make_unique<LaunchServicesInstance>();
}

}  // namespace quillmere
