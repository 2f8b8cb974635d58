#include "Quillmere/Platform/Linux/Plate/LayerShellPlatePanel.h"

#include "Quillmere/Platform/Appearance.h"
#include "Quillmere/Platform/Linux/Plate/PlateDrawing.h"
#include "Quillmere/Platform/RoundedRegion.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace quillmere {

namespace {

// A compositor at work answers within a few milliseconds.
constexpr std::chrono::milliseconds firstAnswers(1000);

// Above full-screen windows on KWin, which puts most other purposes below them.
constexpr const char* purpose = "on-screen-display";

// One on the screen, one on its way there, and one to draw into. A compositor
// that gives none back gets no more of them.
constexpr std::size_t mostPictures = 3;

}  // namespace

std::unique_ptr<PlatePanel> LayerShellPlatePanel::create(const Appearance& appearance) {
    auto connection = WaylandConnection::open();
    if (!connection || !connection->waitUntilReady(firstAnswers) || !connection->isUsable()) return nullptr;
    return std::unique_ptr<PlatePanel>(new LayerShellPlatePanel(std::move(connection), appearance));
}

LayerShellPlatePanel::LayerShellPlatePanel(std::unique_ptr<WaylandConnection> connection, const Appearance& appearance)
    : sheet_(nullptr),
      fade_([this](double) {
          isStale_ = true;
          present();
      }),
      connection_(std::move(connection)) {
    sheet_.setObjectName("plate");
    sheet_.setDrawn(true);
    // An update of a widget without a window is told to nobody. Queued, since
    // the colours follow the same signal.
    QObject::connect(&appearance, &Appearance::changed, &sheet_, [this] { redraw(); }, Qt::QueuedConnection);
    follow();
}

LayerShellPlatePanel::~LayerShellPlatePanel() {
    release();
}

/// To what happens to the outputs, whose scale may change.
void LayerShellPlatePanel::follow() {
    connection_->outputs().onChanged = [this] { present(); };
}

void LayerShellPlatePanel::setContent(QWidget* content, const PlateMaterial& material) {
    delete std::exchange(content_, content);
    material_ = material;
    content->setParent(&sheet_);
    content->show();
    drawn_ = {};
    isStale_ = true;
}

void LayerShellPlatePanel::setFrame(const QRectF& frame) {
    sheet_.resize(frame.size().toSize().grownBy(PlateShadow::margins()));
    if (content_) content_->move(PlateShadow::margin, PlateShadow::margin);
    if (surface_) surface_->resize(sheet_.size());
    drawn_ = {};
    isStale_ = true;
}

QRectF LayerShellPlatePanel::visibleFrame() const {
    return connection_ ? QRectF({}, connection_->outputs().commonSize()) : QRectF();
}

void LayerShellPlatePanel::fade(double alpha, double seconds, std::function<void()> completion) {
    const bool isStepped = surface_ != nullptr;
    fade_.run(alpha, seconds, isStepped, std::move(completion));
}

void LayerShellPlatePanel::orderFront() {
    isWanted_ = true;
    if (!connection_ || connection_->isLost()) reconnect();
    if (surface_ && surface_->isClosed()) release();
    if (!surface_) makeSurface();
    present();
}

void LayerShellPlatePanel::orderOut() {
    isWanted_ = false;
    release();
    if (connection_) connection_->flush();
}

void LayerShellPlatePanel::reconnect() {
    release();
    connection_ = WaylandConnection::open();
    if (!connection_) return;
    connection_->onReady = [this] {
        if (isWanted_) makeSurface();
    };
    follow();
}

void LayerShellPlatePanel::makeSurface() {
    if (!connection_ || !connection_->isUsable()) return;
    surface_ = std::make_unique<LayerShellSurface>(*connection_, purpose, sheet_.size());
    surface_->onPlaced = [this] { present(); };
    connection_->flush();
}

void LayerShellPlatePanel::redraw() {
    drawn_ = {};
    isStale_ = true;
    present();
}

/// Brings the screen up to date, where there is a need and a way.
void LayerShellPlatePanel::present() {
    if (!surface_ || !surface_->isPlaced() || surface_->isClosed()) return;
    const int scale = surface_->scale();
    const bool isDrawn = !drawn_.isNull() && drawn_.devicePixelRatio() == scale;
    if (isDrawn && !isStale_) return;
    if (!isDrawn) drawn_ = drawWidget(sheet_, scale);
    WaylandPicture* picture = freePicture(drawn_.size());
    isStale_ = picture == nullptr;
    if (isStale_) return;
    copyFaded(drawn_, fade_.alpha(), picture->image());
    surface_->blur(blurred());
    surface_->show(*picture, scale);
    connection_->flush();
}

/// What the compositor is to blur. It cannot let that fade, so it ends with a
/// fade's first step.
QRegion LayerShellPlatePanel::blurred() const {
    if (material_.kind != PlateMaterial::Kind::blur || fade_.alpha() < 1) return {};
    return roundedRegion(sheet_.rect().marginsRemoved(PlateShadow::margins()), material_.cornerRadius);
}

/// One to draw into; null as long as the compositor keeps them all, or without
/// memory.
WaylandPicture* LayerShellPlatePanel::freePicture(QSize size) {
    std::erase_if(pictures_, [&](const auto& picture) { return !picture->isBusy() && picture->size() != size; });
    const auto free = std::ranges::find_if(pictures_, [](const auto& picture) { return !picture->isBusy(); });
    if (free != pictures_.end()) return free->get();
    if (pictures_.size() == mostPictures) return nullptr;
    auto made = std::make_unique<WaylandPicture>(connection_->shm(), size);
    if (!made->isUsable()) return nullptr;
    // Queued, since drawing may drop the one that is released.
    made->onReleased = [this] {
        if (isStale_) QMetaObject::invokeMethod(&sheet_, [this] { present(); }, Qt::QueuedConnection);
    };
    return pictures_.emplace_back(std::move(made)).get();
}

/// Takes it from the screen, and frees what was kept for it.
void LayerShellPlatePanel::release() {
    surface_.reset();
    pictures_.clear();
    drawn_ = {};
    isStale_ = true;
}

}  // namespace quillmere
