#include "Tests/Support/StoredSettings.h"

#include "Tests/Support/SupportError.h"

#include <sqlite3.h>

#include <memory>

namespace quillmere::support {

namespace {

struct DatabaseDeleter {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};
using Database = std::unique_ptr<sqlite3, DatabaseDeleter>;

struct StatementDeleter {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementDeleter>;

constexpr int busyMilliseconds = 5000;

Database open(const std::filesystem::path& file, int flags) {
    sqlite3* handle = nullptr;
    const int status = sqlite3_open_v2(file.c_str(), &handle, flags, nullptr);
    Database database(handle);
    if (status != SQLITE_OK) return nullptr;
    sqlite3_busy_timeout(handle, busyMilliseconds);
    return database;
}

Statement prepare(const Database& database, const char* sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database.get(), sql, -1, &statement, nullptr);
    return Statement(statement);
}

void bind(const Statement& statement, int index, const std::string& text) {
    sqlite3_bind_text(statement.get(), index, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}

constexpr const char* createTable = "CREATE TABLE IF NOT EXISTS defaults(key TEXT PRIMARY KEY, type TEXT, value)";

}  // namespace

StoredSettings::StoredSettings(const std::filesystem::path& configHome)
    : file_(configHome / "quillmere" / "defaults.sqlite") {}

void StoredSettings::set(const std::string& key, const std::string& bytes, const std::string& type) const {
    std::filesystem::create_directories(folder());
    const Database database = open(file_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    if (!database || sqlite3_exec(database.get(), createTable, nullptr, nullptr, nullptr) != SQLITE_OK)
        throw SupportError("no settings store at " + file_.string());
    const Statement statement = prepare(database, "REPLACE INTO defaults VALUES(?, ?, ?)");
    bind(statement, 1, key);
    bind(statement, 2, type);
    sqlite3_bind_blob(statement.get(), 3, bytes.data(), static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
    if (sqlite3_step(statement.get()) != SQLITE_DONE) throw SupportError("cannot store " + key);
}

std::optional<std::string> StoredSettings::value(const std::string& key) const {
    const Database database = open(file_, SQLITE_OPEN_READWRITE);
    if (!database) return std::nullopt;
    const Statement statement = prepare(database, "SELECT value FROM defaults WHERE key = ?");
    if (!statement) return std::nullopt;
    bind(statement, 1, key);
    if (sqlite3_step(statement.get()) != SQLITE_ROW) return std::nullopt;
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement.get(), 0));
    const int size = sqlite3_column_bytes(statement.get(), 0);
    return bytes != nullptr ? std::string(bytes, static_cast<std::size_t>(size)) : std::string{};
}

}  // namespace quillmere::support
