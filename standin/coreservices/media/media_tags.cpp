#include "standin/coreservices/media/media_tags.h"

#include <nlohmann/json.hpp>

namespace standin::metadata {
namespace {

using Json = nlohmann::json;

// Reads [{"Group:Tag": value or [values], ...}], event by event: a document made of it would turn a title
// such as 1.10 into the number 1.1. What lies deeper has no use here.
class TagReader : public nlohmann::json_sax<Json> {
 public:
  explicit TagReader(MediaTags& tags) : tags_(tags) {}

  bool null() override { return true; }
  bool boolean(bool value) override { return add(value ? "true" : "false"); }
  bool number_integer(number_integer_t value) override { return add(std::to_string(value)); }
  bool number_unsigned(number_unsigned_t value) override { return add(std::to_string(value)); }
  bool number_float(number_float_t, const string_t& text) override { return add(text); }
  bool string(string_t& value) override { return add(value); }
  bool binary(binary_t&) override { return true; }
  bool start_object(size_t) override { return enter(); }
  bool key(string_t& name) override {
    if (depth_ == kTagDepth) tag_ = &tags_[name];
    return true;
  }
  bool end_object() override { return leave(); }
  bool start_array(size_t) override { return enter(); }
  bool end_array() override { return leave(); }
  bool parse_error(size_t, const std::string&, const Json::exception&) override { return false; }

 private:
  static constexpr int kTagDepth = 2;

  bool enter() {
    ++depth_;
    return true;
  }
  bool leave() {
    --depth_;
    return true;
  }
  bool add(std::string text) {
    if (tag_ && depth_ <= kTagDepth + 1) tag_->push_back(std::move(text));
    return true;
  }

  MediaTags& tags_;
  std::vector<std::string>* tag_ = nullptr;
  int depth_ = 0;
};

}  // namespace

std::optional<MediaTags> parseMediaTags(std::string_view json) {
  MediaTags tags;
  if (json.find_first_not_of(" \r\n\t") == std::string_view::npos) return tags;
  TagReader reader(tags);
  if (!Json::sax_parse(json, &reader)) return {};
  return tags;
}

}  // namespace standin::metadata
