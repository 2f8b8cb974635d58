#include "QuillmereCore/JsonValue.h"

#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/value_stack.hpp>
#include <boost/system/error_code.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <exception>
#include <locale>
#include <sstream>
#include <string>
#include <utility>

namespace quillmere::json {

namespace {

namespace bj = boost::json;
// By its own name: newer releases of the library have no other.
using ErrorCode = boost::system::error_code;

// The double nearest to the number's text; out of range the approximation,
// which is then an infinity or a zero. Not every standard library can read one
// with from_chars.
template <class Double>
Double nearest(const std::string& text, Double approximation) {
    Double value = approximation;
    if constexpr (requires { std::from_chars(text.data(), text.data(), value); }) {
        std::from_chars(text.data(), text.data() + text.size(), value);
    } else {
        std::istringstream stream(text);
        stream.imbue(std::locale::classic());
        if (!(stream >> value)) return approximation;
    }
    return value;
}

// Builds the document from the parser's events. The library's own builder is
// not used because it reads about one number with a fraction in ten a last bit
// off, so that a stored value would not come back equal to what was saved.
class Builder {
public:
    static constexpr std::size_t max_object_size = bj::object::max_size();
    static constexpr std::size_t max_array_size = bj::array::max_size();
    static constexpr std::size_t max_key_size = bj::string::max_size();
    static constexpr std::size_t max_string_size = bj::string::max_size();

    bj::value release() { return stack_.release(); }

    bool on_document_begin(ErrorCode&) { return true; }
    bool on_document_end(ErrorCode&) { return true; }
    bool on_object_begin(ErrorCode&) { return true; }
    bool on_object_end(std::size_t size, ErrorCode&) {
        stack_.push_object(size);
        return true;
    }
    bool on_array_begin(ErrorCode&) { return true; }
    bool on_array_end(std::size_t size, ErrorCode&) {
        stack_.push_array(size);
        return true;
    }
    bool on_key_part(bj::string_view text, std::size_t, ErrorCode&) {
        stack_.push_chars(text);
        return true;
    }
    bool on_key(bj::string_view text, std::size_t, ErrorCode&) {
        stack_.push_key(text);
        return true;
    }
    bool on_string_part(bj::string_view text, std::size_t, ErrorCode&) {
        stack_.push_chars(text);
        return true;
    }
    bool on_string(bj::string_view text, std::size_t, ErrorCode&) {
        stack_.push_string(text);
        return true;
    }
    bool on_number_part(bj::string_view text, ErrorCode&) {
        number_ += text;
        return true;
    }
    bool on_int64(std::int64_t value, bj::string_view, ErrorCode&) {
        number_.clear();
        stack_.push_int64(value);
        return true;
    }
    bool on_uint64(std::uint64_t value, bj::string_view, ErrorCode&) {
        number_.clear();
        stack_.push_uint64(value);
        return true;
    }
    bool on_double(double approximation, bj::string_view text, ErrorCode&) {
        number_ += text;
        stack_.push_double(nearest(number_, approximation));
        number_.clear();
        return true;
    }
    bool on_bool(bool value, ErrorCode&) {
        stack_.push_bool(value);
        return true;
    }
    bool on_null(ErrorCode&) {
        stack_.push_null();
        return true;
    }
    bool on_comment_part(bj::string_view, ErrorCode&) { return true; }
    bool on_comment(bj::string_view, ErrorCode&) { return true; }

private:
    bj::value_stack stack_;
    std::string number_;  // a number's text when the parser hands it over in pieces
};

std::optional<bj::value> parseDocument(std::string_view bytes, ErrorCode& error) {
    bj::parse_options options;
    options.max_depth = maximumDepth;
    bj::basic_parser<Builder> parser(options);
    const std::size_t consumed = parser.write_some(false, bytes.data(), bytes.size(), error);
    if (error || consumed != bytes.size()) return std::nullopt;
    return parser.handler().release();
}

constexpr bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

// The parser refuses an exponent beyond an int's range, which is valid JSON.
// No double tells 1e999999999 from anything larger, so such an exponent is
// written smaller and the number stays the infinity, or the zero, that it is.
std::string limitExponents(std::string_view bytes) {
    constexpr std::string_view largest = "999999999";
    std::string result;
    result.reserve(bytes.size());
    bool inString = false;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        result += bytes[i];
        if (bytes[i] == '"') inString = !inString;
        if (inString) {
            if (bytes[i] == '\\' && i + 1 < bytes.size()) result += bytes[++i];
            continue;
        }
        if (bytes[i] != 'e' && bytes[i] != 'E') continue;
        if (i + 1 < bytes.size() && (bytes[i + 1] == '+' || bytes[i + 1] == '-')) result += bytes[++i];
        const std::size_t start = i + 1;
        while (i + 1 < bytes.size() && isDigit(bytes[i + 1]))
            ++i;
        const std::string_view digits = bytes.substr(start, i + 1 - start);
        const std::size_t zeros = std::min(digits.find_first_not_of('0'), digits.size());
        result += digits.size() - zeros > largest.size() ? largest : digits;
    }
    return result;
}

}  // namespace

std::optional<bj::value> parse(std::string_view bytes) {
    try {
        ErrorCode error;
        std::optional<bj::value> document = parseDocument(bytes, error);
        if (error == bj::error::exponent_overflow) document = parseDocument(limitExponents(bytes), error = {});
        return document;
    } catch (const std::exception&) {
        return std::nullopt;  // the library throws for what exceeds its own size limits
    }
}

const bj::value* member(const bj::value& json, std::string_view key) {
    const bj::object* object = json.if_object();
    return object ? object->if_contains(key) : nullptr;
}

std::optional<std::int64_t> integer(const bj::value& json) {
    if (const std::int64_t* value = json.if_int64()) return *value;
    const double* value = json.if_double();
    // 2^63 and -2^63 as doubles may be what rounding made of a number that does not fit.
    constexpr double limit = 9223372036854775808.0;
    if (!value || !(std::abs(*value) < limit) || std::trunc(*value) != *value) return std::nullopt;
    return static_cast<std::int64_t>(*value);
}

std::optional<std::string> string(const bj::value& json) {
    const bj::string* text = json.if_string();
    if (!text) return std::nullopt;
    return std::string(text->data(), text->size());
}

std::optional<std::vector<std::string>> strings(const bj::value& json) {
    const bj::array* array = json.if_array();
    if (!array) return std::nullopt;
    std::vector<std::string> result;
    result.reserve(array->size());
    for (const bj::value& element : *array) {
        std::optional<std::string> text = string(element);
        if (!text) return std::nullopt;
        result.push_back(*std::move(text));
    }
    return result;
}

}  // namespace quillmere::json
