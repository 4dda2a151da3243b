#include "check/duplicateKeys.h"

#include <cstddef>
#include <set>
#include <utility>

#include <nlohmann/json.hpp>

namespace QVR {

namespace {

// Follows the parser through the objects; items of lists count as parts of what the list is under.
class Follower final : public nlohmann::json_sax<nlohmann::json> {
  public:
    std::vector<std::string> take() { return std::move(repeated_); }

    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool number_integer(number_integer_t) override { return true; }
    bool number_unsigned(number_unsigned_t) override { return true; }
    bool number_float(number_float_t, const string_t&) override { return true; }
    bool string(string_t&) override { return true; }
    bool binary(binary_t&) override { return true; }
    bool start_array(std::size_t) override { return true; }
    bool end_array() override { return true; }

    bool start_object(std::size_t) override {
        open_.push_back({lastKey_, {}});
        return true;
    }
    bool end_object() override {
        lastKey_ = open_.back().path;
        open_.pop_back();
        return true;
    }
    bool key(string_t& name) override {
        Object& object = open_.back();
        lastKey_ = object.path.empty() ? name : object.path + '.' + name;
        if (!object.keys.insert(name).second && named_.insert(lastKey_).second) {
            repeated_.push_back(lastKey_);
        }
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
        return false;
    }

  private:
    struct Object {
        std::string path;
        std::set<std::string> keys;
    };

    std::vector<Object> open_;
    std::string lastKey_;
    std::vector<std::string> repeated_;
    std::set<std::string> named_; // the same, to look them up
};

} // namespace

std::vector<std::string> duplicateKeys(const std::string& text) {
    Follower follower;
    nlohmann::json::sax_parse(text, &follower);
    return follower.take();
}

} // namespace QVR
