#include "Quillmere/Platform/Linux/Desktop/SqliteDefaults.h"

#include <sqlite3.h>

#include <cmath>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace quillmere {

namespace {

// Another instance may be writing; long enough for its transaction, short
// enough not to be felt in the settings.
constexpr int busyTimeoutMilliseconds = 200;

constexpr const char* schema =
    "PRAGMA journal_mode=WAL;"
    // Survives a killed process. Only a power cut could lose the very last
    // changes, and no slider step waits for the disk.
    "PRAGMA synchronous=NORMAL;"
    "CREATE TABLE IF NOT EXISTS defaults(key TEXT PRIMARY KEY, type TEXT, value);";

/// SQLite sets memory for twenty pages aside for each database that it opens;
/// all that is stored here fits into one or two, which it then takes singly.
/// Has an effect before SQLite's first use only, and needs none later.
void takePagesSingly() {
    sqlite3_config(SQLITE_CONFIG_PAGECACHE, nullptr, 0, 0);
}

// Only these speak of the file itself; a locked or full medium does not.
bool meansCorrupt(int status) {
    const int primary = status & 0xFF;
    return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
}

// SQLITE_OK for a sound file, SQLITE_CORRUPT for a damaged one.
int checkSoundness(sqlite3* database) {
    sqlite3_stmt* check = nullptr;
    int status = sqlite3_prepare_v2(database, "PRAGMA quick_check(1)", -1, &check, nullptr);
    if (status == SQLITE_OK) status = sqlite3_step(check);
    if (status == SQLITE_ROW) {
        const auto* verdict = reinterpret_cast<const char*>(sqlite3_column_text(check, 0));
        status = verdict != nullptr && std::string_view(verdict) == "ok" ? SQLITE_OK : SQLITE_CORRUPT;
    }
    sqlite3_finalize(check);
    return status;
}

// As sqlite3_open's URIs have it (https://sqlite.org/uri.html): a "?" or "#" of
// the path would begin the options, a "%" be taken for an encoded byte.
std::string fileURI(const std::filesystem::path& file) {
    std::string uri = "file:";
    for (const char character : file.string()) {
        if (character == '?')
            uri += "%3f";
        else if (character == '#')
            uri += "%23";
        else if (character == '%')
            uri += "%25";
        else
            uri += character;
    }
    return uri;
}

void bindText(sqlite3_stmt* statement, int index, std::string_view text) {
    sqlite3_bind_text64(statement, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

std::string columnText(sqlite3_stmt* statement, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    return text == nullptr ? std::string()
                           : std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(statement, column)));
}

std::string columnBlob(sqlite3_stmt* statement, int column) {
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, column));
    return bytes == nullptr ? std::string()
                            : std::string(bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement, column)));
}

}  // namespace

void SqliteDefaults::CloseDatabase::operator()(sqlite3* database) const {
    sqlite3_close_v2(database);
}

void SqliteDefaults::FinalizeStatement::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

std::filesystem::path SqliteDefaults::standardFile() {
    const auto folder = [](const char* variable) -> std::filesystem::path {
        const char* value = std::getenv(variable);
        return value != nullptr && *value == '/' ? value : "";
    };
    std::filesystem::path base = folder("XDG_CONFIG_HOME");
    if (base.empty()) base = folder("HOME") / ".config";
    return base / "quillmere" / "defaults.sqlite";
}

SqliteDefaults::SqliteDefaults(std::filesystem::path file) : file_(std::move(file)) {
    takePagesSingly();
    std::error_code error;
    std::filesystem::create_directories(file_.parent_path(), error);
    open();
}

SqliteDefaults::~SqliteDefaults() {
    close();
}

void SqliteDefaults::open() {
    if (openWritable()) return;
    openReadOnly();
}

// True when the store takes writes. A file that cannot be read is set aside
// once and a new one begun.
bool SqliteDefaults::openWritable() {
    for (int attempt = 0; attempt < 2; ++attempt) {
        sqlite3* database = nullptr;
        int status = sqlite3_open_v2(file_.c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
        database_.reset(database);
        if (status != SQLITE_OK) return false;
        sqlite3_busy_timeout(database, busyTimeoutMilliseconds);
        status = sqlite3_exec(database, schema, nullptr, nullptr, nullptr);
        if (status == SQLITE_OK) status = checkSoundness(database);
        if (status == SQLITE_OK) status = prepareStatements();
        // SQLITE_ERROR: a table of this name that is not ours.
        if (!meansCorrupt(status) && status != SQLITE_ERROR) return status == SQLITE_OK;
        setAside();
    }
    return false;
}

// A folder that takes no writes still lets its values be read: with the
// write-ahead log where that can be opened, else the bare file.
void SqliteDefaults::openReadOnly() {
    const std::string uri = fileURI(file_);
    for (const char* mode : {"?mode=ro", "?immutable=1"}) {
        close();
        sqlite3* database = nullptr;
        const int status =
            sqlite3_open_v2((uri + mode).c_str(), &database, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr);
        database_.reset(database);
        if (status == SQLITE_OK && prepareStatements() == SQLITE_OK) return;
    }
    close();
}

int SqliteDefaults::prepareStatements() {
    int status = SQLITE_OK;
    const auto prepare = [this, &status](Statement& statement, std::string_view sql) {
        if (status != SQLITE_OK) return;
        sqlite3_stmt* prepared = nullptr;
        status = sqlite3_prepare_v3(database_.get(), sql.data(), static_cast<int>(sql.size()),
                                    SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
        statement.reset(prepared);
    };
    prepare(select_, "SELECT type, value FROM defaults WHERE key = ?");
    prepare(insert_, "INSERT OR REPLACE INTO defaults(key, type, value) VALUES(?, ?, ?)");
    prepare(delete_, "DELETE FROM defaults WHERE key = ?");
    return status;
}

void SqliteDefaults::close() {
    select_.reset();
    insert_.reset();
    delete_.reset();
    database_.reset();
}

void SqliteDefaults::setAside() {
    close();
    std::error_code error;
    std::filesystem::path aside;
    int number = 1;
    do {
        aside = file_;
        aside += ".corrupt-" + std::to_string(number++);
    } while (std::filesystem::exists(aside, error));
    std::filesystem::rename(file_, aside, error);
    // The log belongs to the old file; a new one must not replay it.
    for (const char* suffix : {"-wal", "-shm"}) {
        std::filesystem::path from = file_;
        std::filesystem::path to = aside;
        std::filesystem::rename(from += suffix, to += suffix, error);
    }
}

std::optional<SqliteDefaults::Value> SqliteDefaults::read(std::string_view key) const {
    if (const auto found = unsaved_.find(key); found != unsaved_.end()) return found->second;
    if (!select_) return std::nullopt;
    sqlite3_stmt* row = select_.get();
    bindText(row, 1, key);
    std::optional<Value> value;
    if (sqlite3_step(row) == SQLITE_ROW) {
        value.emplace(columnText(row, 0), std::int64_t{0});
        switch (sqlite3_column_type(row, 1)) {
            case SQLITE_INTEGER:
                value->content = std::int64_t{sqlite3_column_int64(row, 1)};
                break;
            case SQLITE_FLOAT:
                value->content = sqlite3_column_double(row, 1);
                break;
            case SQLITE_TEXT:
                value->content = columnText(row, 1);
                break;
            case SQLITE_BLOB:
                value->content = Blob{columnBlob(row, 1)};
                break;
            default:
                value.reset();
        }
    }
    sqlite3_reset(row);
    sqlite3_clear_bindings(row);
    return value;
}

int SqliteDefaults::store(std::string_view key, const std::optional<Value>& value) {
    sqlite3_stmt* statement = (value ? insert_ : delete_).get();
    if (statement == nullptr) return SQLITE_CANTOPEN;
    bindText(statement, 1, key);
    if (value) {
        bindText(statement, 2, value->type);
        if (const auto* integer = std::get_if<std::int64_t>(&value->content))
            sqlite3_bind_int64(statement, 3, *integer);
        if (const auto* real = std::get_if<double>(&value->content)) sqlite3_bind_double(statement, 3, *real);
        if (const auto* text = std::get_if<std::string>(&value->content)) bindText(statement, 3, *text);
        if (const auto* blob = std::get_if<Blob>(&value->content)) {
            sqlite3_bind_blob64(statement, 3, blob->bytes.data(), blob->bytes.size(), SQLITE_TRANSIENT);
        }
    }
    sqlite3_step(statement);
    const int status = sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
    return status;
}

// Stores what earlier writes could not, key by key, until the medium refuses one.
int SqliteDefaults::storeUnsaved() {
    while (!unsaved_.empty()) {
        const auto first = unsaved_.begin();
        if (const int status = store(first->first, first->second); status != SQLITE_OK) return status;
        unsaved_.erase(first);
    }
    return SQLITE_OK;
}

void SqliteDefaults::write(std::string_view key, std::optional<Value> value) {
    unsaved_.insert_or_assign(std::string(key), std::move(value));
    const int status = storeUnsaved();
    if (status == SQLITE_OK) return;
    // A store that was damaged, or a medium that was missing or locked, may be
    // mended by now; what is still unsaved waits for the next write.
    if (meansCorrupt(status)) setAside();
    close();
    open();
    storeUnsaved();
}

std::optional<std::string> SqliteDefaults::data(std::string_view key) const {
    const std::optional<Value> value = read(key);
    if (!value || value->type != "data" || !std::holds_alternative<Blob>(value->content)) return std::nullopt;
    return std::get<Blob>(value->content).bytes;
}

std::optional<bool> SqliteDefaults::boolean(std::string_view key) const {
    const std::optional<Value> value = read(key);
    if (!value || value->type != "boolean") return std::nullopt;
    const auto* integer = std::get_if<std::int64_t>(&value->content);
    if (integer == nullptr || (*integer != 0 && *integer != 1)) return std::nullopt;
    return *integer == 1;
}

std::optional<Date> SqliteDefaults::date(std::string_view key) const {
    const std::optional<Value> value = read(key);
    if (!value || value->type != "date") return std::nullopt;
    const auto* seconds = std::get_if<double>(&value->content);
    using Seconds = std::chrono::duration<double>;
    // What the clock's own type cannot hold is no date.
    constexpr double limit = Seconds(Date::duration::max()).count();
    if (seconds == nullptr || !(std::abs(*seconds) < limit)) return std::nullopt;
    // A double tells today's seconds to about a quarter of a microsecond.
    return Date(std::chrono::round<std::chrono::microseconds>(Seconds(*seconds)));
}

std::optional<std::string> SqliteDefaults::string(std::string_view key) const {
    std::optional<Value> value = read(key);
    if (!value || value->type != "string" || !std::holds_alternative<std::string>(value->content)) return std::nullopt;
    return std::get<std::string>(std::move(value->content));
}

void SqliteDefaults::setData(std::string_view key, std::string_view bytes) {
    write(key, Value{"data", Blob{std::string(bytes)}});
}

void SqliteDefaults::setBoolean(std::string_view key, bool value) {
    write(key, Value{"boolean", std::int64_t{value}});
}

void SqliteDefaults::setDate(std::string_view key, Date value) {
    write(key, Value{"date", std::chrono::duration<double>(value.time_since_epoch()).count()});
}

void SqliteDefaults::setString(std::string_view key, std::string_view value) {
    write(key, Value{"string", std::string(value)});
}

void SqliteDefaults::remove(std::string_view key) {
    write(key, std::nullopt);
}

}  // namespace quillmere
