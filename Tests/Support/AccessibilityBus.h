#pragma once

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/Desktop.h"

#include <QDBusConnection>
#include <QObject>
#include <QRect>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmere::support {

/// One object of a program as a screen reader gets it.
struct Accessible {
    QString service;
    QString path;
    std::string name;
    unsigned int role = 0;     ///< AtspiRole
    std::uint64_t states = 0;  ///< bits of AtspiStateType
    QRect frame;               ///< on the screen, in pixels

    bool has(unsigned int state) const { return ((states >> state) & 1U) != 0; }
};

/// Numbers of the AT-SPI protocol (atspi-constants.h) that the tests use.
namespace atspi {
namespace role {
inline constexpr unsigned int alert = 2;
inline constexpr unsigned int checkBox = 7;
inline constexpr unsigned int comboBox = 11;
inline constexpr unsigned int label = 29;
inline constexpr unsigned int pushButton = 43;
inline constexpr unsigned int radioButton = 44;
inline constexpr unsigned int slider = 51;
inline constexpr unsigned int pushButtonMenu = 129;
}  // namespace role
namespace state {
inline constexpr unsigned int checked = 4;
inline constexpr unsigned int enabled = 8;
inline constexpr unsigned int focused = 12;
inline constexpr unsigned int showing = 25;
}  // namespace state
}  // namespace atspi

/// The desktop's accessibility service and a screen reader's view through it:
/// what the program's windows hold, by role and name.
class AccessibilityBus : public QObject {
    Q_OBJECT
public:
    /// Starts the service and tells programs that there is a screen reader.
    /// Before the program: it looks once, when it starts.
    explicit AccessibilityBus(Desktop& desktop);
    ~AccessibilityBus() override;

    /// Everything that the program shows at this moment, depth first.
    std::vector<Accessible> objects() const;
    /// The first one that is showing and has this name.
    std::optional<Accessible> find(const std::string& name) const;
    /// The names of those showing with this role, in their order.
    std::vector<std::string> names(unsigned int role) const;
    /// The name of what labels this object; empty without one.
    std::string label(const Accessible& object) const;
    /// The value of an object with one, such as a slider.
    double value(const Accessible& object) const;

    /// The objects that have announced themselves as showing, by path.
    const std::vector<QString>& shown() const { return shown_; }
    void forgetShown() { shown_.clear(); }

private slots:
    void stateChanged(const QString& state, int isSet, int ignored, const QDBusMessage& message);

private:
    void collect(const QString& service, const QString& path, std::vector<Accessible>& into) const;
    std::vector<std::pair<QString, QString>> children(const QString& service, const QString& path) const;
    Accessible describe(const QString& service, const QString& path) const;

    std::unique_ptr<ChildProcess> launcher_;
    std::unique_ptr<QDBusConnection> bus_;
    std::vector<QString> shown_;
};

}  // namespace quillmere::support
