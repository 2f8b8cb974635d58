#pragma once

#include "QuillmereCore/UserDefaults.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

struct sqlite3;
struct sqlite3_stmt;

namespace quillmere {

/// The user's defaults in one SQLite file, table `defaults(key, type, value)`.
///
/// A write is in the operating system's hands when it returns: a killed
/// process loses nothing. A file that SQLite cannot read is renamed to
/// "<name>.corrupt-<n>" and a fresh one started. Where the medium takes no
/// writes, new values live in memory, and are stored by the next write that
/// succeeds.
class SqliteDefaults : public UserDefaults {
public:
    /// Opens or creates `file`; its folders are created as needed.
    explicit SqliteDefaults(std::filesystem::path file);
    ~SqliteDefaults() override;

    /// `$XDG_CONFIG_HOME/quillmere/defaults.sqlite`, in `~/.config` by default
    /// (XDG Base Directory Specification: a relative path there is ignored).
    static std::filesystem::path standardFile();

    std::optional<std::string> data(std::string_view key) const override;
    std::optional<bool> boolean(std::string_view key) const override;
    std::optional<Date> date(std::string_view key) const override;
    std::optional<std::string> string(std::string_view key) const override;

    void setData(std::string_view key, std::string_view bytes) override;
    void setBoolean(std::string_view key, bool value) override;
    void setDate(std::string_view key, Date value) override;
    void setString(std::string_view key, std::string_view value) override;
    void remove(std::string_view key) override;

private:
    struct Blob {
        std::string bytes;
    };
    struct Value {
        std::string type;  ///< "data", "boolean", "date" or "string"
        std::variant<std::int64_t, double, std::string, Blob> content;
    };
    struct CloseDatabase {
        void operator()(sqlite3* database) const;
    };
    struct FinalizeStatement {
        void operator()(sqlite3_stmt* statement) const;
    };
    using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

    void open();
    bool openWritable();
    void openReadOnly();
    int prepareStatements();
    void close();
    void setAside();
    std::optional<Value> read(std::string_view key) const;
    void write(std::string_view key, std::optional<Value> value);
    int store(std::string_view key, const std::optional<Value>& value);
    int storeUnsaved();

    std::filesystem::path file_;
    std::unique_ptr<sqlite3, CloseDatabase> database_;
    Statement select_;
    Statement insert_;
    Statement delete_;
    /// What the medium has not taken yet; a removed key has no value.
    std::map<std::string, std::optional<Value>, std::less<>> unsaved_;
};

}  // namespace quillmere
