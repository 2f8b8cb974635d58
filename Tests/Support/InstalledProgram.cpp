#include "Tests/Support/InstalledProgram.h"

#include "Tests/Support/SupportError.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace quillmere::support {

namespace {

void write(const std::filesystem::path& path, const QByteArray& bytes) {
    QFile file(QString::fromStdString(path.string()));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        throw SupportError("cannot write " + path.string());
    }
}

QByteArray information(const std::string& feed, const std::string& version) {
    QJsonObject keys{{"CFBundleShortVersionString", QString::fromStdString(version)}};
    if (!feed.empty()) keys.insert("QuillmereUpdateFeed", QString::fromStdString(feed));
    return QJsonDocument(keys).toJson();
}

}  // namespace

InstalledProgram::InstalledProgram(const std::filesystem::path& folder, const std::filesystem::path& program,
                                   const std::string& feed, const std::string& version)
    : path_(folder / "bin" / program.filename()) {
    using std::filesystem::copy_options;
    std::filesystem::create_directories(path_.parent_path());
    std::filesystem::create_directories(folder / "share" / "quillmere");
    std::filesystem::copy_file(program, path_, copy_options::overwrite_existing);
    const std::filesystem::path plugins = QUILLMERE_PLUGINS_FROM_PROGRAM;
    const std::filesystem::path own = (path_.parent_path() / plugins).lexically_normal();
    std::filesystem::create_directories(own);
    std::filesystem::copy(program.parent_path() / plugins, own,
                          copy_options::recursive | copy_options::overwrite_existing);
    write(folder / "share" / "quillmere" / "Info.json", information(feed, version));
}

}  // namespace quillmere::support
