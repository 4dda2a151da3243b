#include "json11.hpp"

#include <cstdint>
#include <limits>
#include <utility>

#include <nlohmann/json.hpp>

namespace json11 {

namespace {

constexpr std::size_t maximumDepth = 200;

// Longest reason kept of a parser's message, which may quote the document without end.
constexpr std::size_t maximumReason = 300;

// Ready before any other static is: a missing member may be asked for while the library loads.
constinit const Json nullValue;

std::string atByte(std::size_t position) {
    return " (byte " + std::to_string(position) + ")";
}

// Byte, counted from 1, of the bracket that opens one level too many. The parser's events carry no
// position, so this walks the text once more when a document fails for its depth.
std::size_t positionOfExcessiveDepth(const std::string& text) {
    std::size_t depth = 0;
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (inString) {
            if (c == '\\') {
                ++i;
            } else if (c == '"') {
                inString = false;
            }
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            if (++depth > maximumDepth) {
                return i + 1;
            }
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return text.size();
}

// Builds a value from the parser's events. Containers under construction are kept on a stack of
// our own, so that depth costs heap and not the caller's stack.
class Builder final : public nlohmann::json_sax<nlohmann::json> {
  public:
    Builder(const std::string& text, std::string& error) : text_(text), error_(error) {}

    Json take() { return std::move(root_); }

    bool null() override { return add(Json()); }
    bool boolean(bool value) override { return add(Json(value)); }
    bool number_integer(std::int64_t value) override { return add(Json(double(value))); }
    bool number_unsigned(std::uint64_t value) override { return add(Json(double(value))); }
    bool number_float(double value, const std::string&) override { return add(Json(value)); }
    bool string(std::string& value) override { return add(Json(std::move(value))); }
    bool binary(nlohmann::json::binary_t&) override { return false; }

    bool start_object(std::size_t) override { return open(Json::OBJECT); }
    bool start_array(std::size_t) override { return open(Json::ARRAY); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }

    bool key(std::string& name) override {
        open_.back().key = std::move(name);
        return true;
    }

    bool parse_error(std::size_t position, const std::string&,
                     const nlohmann::detail::exception& problem) override {
        // The parser's own text opens with its exception's number, which tells a reader nothing.
        std::string reason = problem.what();
        if (const auto end = reason.find("] "); end != std::string::npos) {
            reason.erase(0, end + 2);
        }
        if (reason.size() > maximumReason) {
            reason.resize(maximumReason);
            reason += "...";
        }
        error_ = reason + atByte(position);
        return false;
    }

  private:
    struct Container {
        Json::Type type;
        Json::array items;
        Json::object members;
        std::string key;
    };

    bool open(Json::Type type) {
        if (open_.size() == maximumDepth) {
            error_ = "exceeded maximum nesting depth of " + std::to_string(maximumDepth) +
                     atByte(positionOfExcessiveDepth(text_));
            return false;
        }
        open_.push_back({type, {}, {}, {}});
        return true;
    }

    bool close() {
        Container done = std::move(open_.back());
        open_.pop_back();
        return done.type == Json::OBJECT ? add(Json(std::move(done.members)))
                                         : add(Json(std::move(done.items)));
    }

    bool add(Json value) {
        if (open_.empty()) {
            root_ = std::move(value);
        } else if (Container& parent = open_.back(); parent.type == Json::OBJECT) {
            parent.members[std::move(parent.key)] = std::move(value);
        } else {
            parent.items.push_back(std::move(value));
        }
        return true;
    }

    const std::string& text_;
    std::string& error_;
    std::vector<Container> open_;
    Json root_;
};

nlohmann::json toNlohmann(const Json& value) {
    switch (value.type()) {
    case Json::NUL:
        return nullptr;
    case Json::NUMBER: {
        const double number = value.number_value();
        const auto whole = static_cast<double>(value.int_value());
        return whole == number ? nlohmann::json(value.int_value()) : nlohmann::json(number);
    }
    case Json::BOOL:
        return value.bool_value();
    case Json::STRING:
        return value.string_value();
    case Json::ARRAY: {
        auto result = nlohmann::json::array();
        for (const Json& item : value.array_items()) {
            result.push_back(toNlohmann(item));
        }
        return result;
    }
    case Json::OBJECT: {
        auto result = nlohmann::json::object();
        for (const auto& [key, item] : value.object_items()) {
            result[key] = toNlohmann(item);
        }
        return result;
    }
    }
    return nullptr;
}

} // namespace

Json::Json(std::string value) : value_(std::make_shared<const std::string>(std::move(value))) {}

Json::Json(array values) : value_(std::make_shared<const array>(std::move(values))) {}

Json::Json(object values) : value_(std::make_shared<const object>(std::move(values))) {}

int Json::int_value() const {
    const double number = number_value();
    constexpr double lowest = std::numeric_limits<int>::min();
    constexpr double highest = std::numeric_limits<int>::max();
    return number > lowest - 1.0 && number < highest + 1.0 ? static_cast<int>(number)
                                                           : std::numeric_limits<int>::min();
}

bool Json::bool_value() const {
    const bool* truth = std::get_if<bool>(&value_);
    return truth != nullptr && *truth;
}

const std::string& Json::string_value() const {
    static const std::string empty;
    const auto* text = std::get_if<SharedString>(&value_);
    return text != nullptr ? **text : empty;
}

const Json::array& Json::array_items() const {
    static const array empty;
    const auto* items = std::get_if<SharedArray>(&value_);
    return items != nullptr ? **items : empty;
}

const Json::object& Json::object_items() const {
    static const object empty;
    const auto* members = std::get_if<SharedObject>(&value_);
    return members != nullptr ? **members : empty;
}

const Json& Json::operator[](std::size_t index) const {
    const array& items = array_items();
    return index < items.size() ? items[index] : nullValue;
}

const Json& Json::operator[](const std::string& key) const {
    const object& members = object_items();
    const auto found = members.find(key);
    return found != members.end() ? found->second : nullValue;
}

bool Json::operator==(const Json& other) const {
    if (type() != other.type()) {
        return false;
    }
    switch (type()) {
    case STRING:
        return string_value() == other.string_value();
    case ARRAY:
        return array_items() == other.array_items();
    case OBJECT:
        return object_items() == other.object_items();
    case NUL:
    case NUMBER:
    case BOOL:
        break;
    }
    return value_ == other.value_;
}

std::string Json::dump() const {
    // Strings may come from a device's firmware: what is no UTF-8 is replaced, not thrown about.
    return toNlohmann(*this).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

Json Json::parse(const std::string& text, std::string& error, JsonParse) {
    // Two things the parser lets through: it skips a byte order mark, and it takes a NUL byte for
    // the end of the text, whatever follows.
    if (text.starts_with("\xEF\xBB\xBF")) {
        error = "unexpected byte order mark" + atByte(1);
        return {};
    }
    if (const auto position = text.find('\0'); position != std::string::npos) {
        error = "unexpected NUL character" + atByte(position + 1);
        return {};
    }
    Builder builder(text, error);
    const bool parsed = nlohmann::json::sax_parse(text, &builder);
    return parsed ? builder.take() : Json();
}

} // namespace json11
