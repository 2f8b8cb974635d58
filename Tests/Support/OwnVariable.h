#pragma once

#include <QByteArray>

#include <string>

namespace quillmere::support {

/// A variable in this process's own environment, which its children inherit,
/// for as long as this object lives.
class OwnVariable {
public:
    OwnVariable(const char* name, const std::string& value)
        : name_(name), was_(qgetenv(name)), wasSet_(qEnvironmentVariableIsSet(name)) {
        qputenv(name_, QByteArray::fromStdString(value));
    }
    ~OwnVariable() {
        if (wasSet_)
            qputenv(name_, was_);
        else
            qunsetenv(name_);
    }
    OwnVariable(const OwnVariable&) = delete;
    OwnVariable& operator=(const OwnVariable&) = delete;

private:
    const char* name_;
    QByteArray was_;
    bool wasSet_;
};

}  // namespace quillmere::support
