// JSON values under the names of the json11 library, parsed by nlohmann-json.
//
// Used where no packaged json11 is installed. Covers what this project uses: immutable values
// that are cheap to copy, typed reads that never throw, and a strict parser.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace json11 {

enum class JsonParse { STANDARD };

class Json final {
  public:
    enum Type { NUL, NUMBER, BOOL, STRING, ARRAY, OBJECT };

    using array = std::vector<Json>;
    using object = std::map<std::string, Json>;

    Json() noexcept = default;
    Json(std::nullptr_t) noexcept {}
    Json(double value) : value_(value) {}
    Json(int value) : value_(static_cast<double>(value)) {}
    Json(bool value) : value_(value) {}
    Json(const char* value) : Json(std::string(value)) {}
    Json(std::string value);
    Json(array values);
    Json(object values);
    // A pointer would otherwise quietly become a bool.
    Json(void*) = delete;

    Type type() const { return static_cast<Type>(value_.index()); }
    bool is_null() const { return type() == NUL; }
    bool is_number() const { return type() == NUMBER; }
    bool is_bool() const { return type() == BOOL; }
    bool is_string() const { return type() == STRING; }
    bool is_array() const { return type() == ARRAY; }
    bool is_object() const { return type() == OBJECT; }

    // The value, or a neutral one (0, false, "", empty) when the type is another.
    double number_value() const {
        const double* number = std::get_if<double>(&value_);
        return number != nullptr ? *number : 0.0;
    }
    // Truncated toward zero; a number that no int can hold gives the smallest int.
    int int_value() const;
    bool bool_value() const;
    const std::string& string_value() const;
    const array& array_items() const;
    const object& object_items() const;

    // The item, or the null value when there is none or this is no array / object.
    const Json& operator[](std::size_t index) const;
    const Json& operator[](const std::string& key) const;

    bool operator==(const Json& other) const;

    // The value as compact JSON text. A number that is not finite becomes null.
    std::string dump() const;

    // Parses `text` as one strict RFC 8259 document, at most 200 levels deep. On success `error`
    // is left untouched; on failure it becomes a message with the position, and the result is
    // the null value.
    static Json parse(const std::string& text, std::string& error,
                      JsonParse strategy = JsonParse::STANDARD);

  private:
    using SharedString = std::shared_ptr<const std::string>;
    using SharedArray = std::shared_ptr<const array>;
    using SharedObject = std::shared_ptr<const object>;

    // In the order of Type. Numbers stay inline: a calibration grid is mostly numbers.
    std::variant<std::monostate, double, bool, SharedString, SharedArray, SharedObject> value_;
};

} // namespace json11
