#include "Tests/Support/SessionBus.h"

#include "Tests/Support/StartupPipe.h"
#include "Tests/Support/SupportError.h"

#include <QDBusError>

#include <fstream>

namespace quillmere::support {

namespace {

// No service folder is named, so the bus has nothing to activate.
std::string busConfiguration(const std::filesystem::path& folder) {
    return R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path=)"
           + (folder / "bus").string() + R"(</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";
}

}  // namespace

SessionBus::SessionBus(const std::filesystem::path& folder, const Environment& environment) {
    // To the socket, not to what else is there.
    std::filesystem::permissions(folder, std::filesystem::perms::group_exec | std::filesystem::perms::others_exec,
                                 std::filesystem::perm_options::add);
    const std::filesystem::path configuration = folder / "bus.conf";
    std::ofstream(configuration) << busConfiguration(folder);
    StartupPipe ready;
    process_ = std::make_unique<ChildProcess>(ChildProcess::Options{
        .arguments = {"dbus-daemon", "--nofork", "--nopidfile", "--config-file=" + configuration.string(),
                      "--print-address=" + std::to_string(ready.writeEnd())},
        .environment = environment,
        .output = folder / "bus.log",
        .inheritedDescriptors = {ready.writeEnd()},
        .prepare = {},
    });
    address_ = ready.readLine();
    if (address_.empty()) throw SupportError("the message bus does not start: " + process_->output());
    // Without the number that only this one has, as a session states it: the next
    // one of this folder is to be found there, too.
    address_ = address_.substr(0, address_.find(','));
}

QDBusConnection SessionBus::connect() const {
    static int count = 0;
    const QString name = QStringLiteral("test-%1").arg(++count);
    QDBusConnection connection = QDBusConnection::connectToBus(QString::fromStdString(address_), name);
    if (!connection.isConnected())
        throw SupportError("no connection to the bus: " + connection.lastError().message().toStdString());
    return connection;
}

}  // namespace quillmere::support
