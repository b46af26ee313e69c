#include "tests/plugin/sweeps/answers.h"

#include <algorithm>

namespace {

const std::string kNeutral = "neutral";

std::string describeEntries(const host::Value& dictionary) {
  std::string all;
  for (const auto& [key, value] : host::entries(dictionary)) {
    all += "[" + describe(key) + " = " + describe(value) + "]";
  }
  return all.empty() ? kNeutral : all;
}

// What the platform answers where it fails, and what an item has that could not be given another file.
const std::set<std::string> kFailures = {"index: -1", "window status: -50", "Constructor: f2"};

// The texts in square brackets.
std::vector<std::string> elementsOf(const std::string& value) {
  std::vector<std::string> elements;
  for (size_t start = value.find('['); start != std::string::npos; start = value.find('[', start + 1)) {
    elements.push_back(value.substr(start + 1, value.find(']', start) - start - 1));
  }
  return elements;
}

bool isDegradedElement(const std::string& element) {
  if (element == "file:///tmp/") return true;  // a URL of which no folder item could be had
  return element == kNeutral || element.ends_with(" = " + kNeutral) || element.starts_with(kNeutral + " = ");
}

bool isDegradedList(const std::string& value, const std::string& complete) {
  const auto whole = elementsOf(complete), left = elementsOf(value);
  return !left.empty() && left.size() <= whole.size() &&
         std::all_of(left.begin(), left.end(), [&](const std::string& element) {
           return isDegradedElement(element) || std::find(whole.begin(), whole.end(), element) != whole.end();
         });
}

// The class, the message and the number may each be missing.
bool isKnown(const host::Exception& raised) {
  // The host's own, where an element that could not be inserted leaves its place free, and where a key could
  // not be had.
  if (raised == host::Exception{"OutOfBoundsException", "", 0}) return true;
  if (raised == host::Exception{"KeyNotFoundException", "", 0}) return true;
  const std::set<std::string> classes = {"NilObjectException", "RuntimeException"};
  const std::set<std::string> messages = {"MDQuery Reference is nil", "MDItem Reference is nil",
                                          "Wrong type used for getting attribute value.", ""};
  return classes.count(raised.className) && messages.count(raised.message) &&
         (raised.errorNumber == 0 || raised.errorNumber == -1);
}

}  // namespace

std::string describe(const host::Value& value) {
  switch (value.kind()) {
    case host::Kind::boolean:
      return value.boolean() ? "true" : kNeutral;
    case host::Kind::int32:
    case host::Kind::int64:
    case host::Kind::uint32:
      return value.integer() != 0 ? std::to_string(value.integer()) : kNeutral;
    case host::Kind::array: {
      std::string all;
      for (const host::Value& element : host::elements(value)) all += "[" + describe(element) + "]";
      return all.empty() ? kNeutral : all;
    }
    case host::Kind::number:
      return value.number() != 0 ? std::to_string(value.number()) : kNeutral;
    case host::Kind::object:
      if (value.isNil()) return kNeutral;
      return host::isA(value, "Dictionary") ? describeEntries(value) : "an object";
    default:
      return value.isNil() || value.text().empty() ? kNeutral : value.text();
  }
}

std::string Answer::text() const {
  std::string all = topic + ": " + value;
  for (const auto& exception : raised) {
    all += ", raised " + exception.className + " \"" + exception.message + "\" " +
           std::to_string(exception.errorNumber);
  }
  return all;
}

std::vector<std::string> textsOf(const std::vector<Answer>& answers) {
  std::vector<std::string> texts;
  for (const Answer& answer : answers) texts.push_back(answer.text());
  return texts;
}

bool isDegraded(const Answer& answer, const Answer& complete) {
  if (answer.topic != complete.topic) return false;
  if (!std::all_of(answer.raised.begin(), answer.raised.end(), isKnown)) return false;
  return answer.value == complete.value || answer.value == kNeutral ||
         kFailures.count(answer.topic + ": " + answer.value) || isDegradedList(answer.value, complete.value);
}
