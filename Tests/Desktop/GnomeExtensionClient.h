#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QVariantList>

#include <string>
#include <vector>

namespace quillmere::support {

/// One shortcut with its group, as the extension is armed with it.
struct ArmedGroup {
    std::string token;
    std::string accelerator;
    std::vector<std::string> sources;  ///< "xkb:us", in order
};

/// What the extension tells of a shortcut that it has acted on.
struct ToldSwitch {
    std::string token;
    unsigned int index = 0;

    friend bool operator==(const ToldSwitch&, const ToldSwitch&) = default;
};

/// The program's side of the Shell extension's interface, spoken by a test.
class GnomeExtensionClient : public QObject {
    Q_OBJECT
public:
    static constexpr const char* service = "org.quillmere.GnomeExtension";
    static constexpr const char* programName = "org.quillmere.Quillmere";

    explicit GnomeExtensionClient(const QDBusConnection& bus);

    /// Becomes the program, in the extension's eyes, and ceases to be.
    void takeName();
    void leaveName();

    QDBusMessage call(const char* method, const QVariantList& arguments = {}) const;

    /// The list as "xkb:us", in order; and what is told of each beside that:
    /// "name (language)".
    std::vector<std::string> sources() const;
    std::vector<std::string> descriptions() const;
    /// The place of the current source in the list.
    unsigned int current() const;
    /// By its identifier, as "xkb:us".
    bool activate(const std::string& source) const;
    /// The tokens that were refused.
    std::vector<std::string> arm(const std::vector<ArmedGroup>& groups) const;
    void showIndicator(bool isShown, bool isActive) const;

    // What was told since the start.
    const std::vector<ToldSwitch>& switches() const { return switches_; }
    const std::vector<std::string>& presses() const { return presses_; }
    const std::vector<unsigned int>& currents() const { return currents_; }
    int listChanges() const { return listChanges_; }
    const std::vector<std::string>& choices() const { return choices_; }

private slots:
    void noteSwitch(const QString& token, unsigned int index);
    void notePress(const QString& token);
    void noteCurrent(unsigned int index);
    void noteList();
    void noteChoice(const QString& what);

private:
    QDBusConnection bus_;
    std::vector<ToldSwitch> switches_;
    std::vector<std::string> presses_;
    std::vector<unsigned int> currents_;
    int listChanges_ = 0;
    std::vector<std::string> choices_;
};

}  // namespace quillmere::support
