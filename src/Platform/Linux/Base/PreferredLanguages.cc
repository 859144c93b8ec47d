#include "Platform/Linux/Base/PreferredLanguages.h"

#include <algorithm>
#include <cstdlib>

namespace tessaro::platform {

namespace {

std::string_view Environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

// The one locale that messages are in.
std::string_view MessagesLocale() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    if (const auto value = Environment(name); !value.empty()) return value;
  }
  return "";
}

// Splits a list like "de_AT:fr".
std::vector<std::string_view> Elements(std::string_view list) {
  std::vector<std::string_view> elements;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(':'), list.size());
    elements.push_back(list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return elements;
}

}  // namespace

std::string LanguageIdentifier(std::string_view locale) {
  std::string identifier(locale.substr(0, locale.find_first_of(".@")));
  if (identifier == "C" || identifier == "POSIX") return {};
  std::replace(identifier.begin(), identifier.end(), '_', '-');
  return identifier;
}

std::vector<std::string> PreferredLanguagesOfEnvironment() {
  const std::string messages = LanguageIdentifier(MessagesLocale());
  std::vector<std::string> languages;
  const auto add = [&languages](std::string language) {
    const bool isNew = std::find(languages.begin(), languages.end(), language) == languages.end();
    if (!language.empty() && isNew) languages.push_back(std::move(language));
  };
  // As gettext has it: LANGUAGE counts only where a language is set at all.
  if (!messages.empty()) {
    for (const auto element : Elements(Environment("LANGUAGE"))) add(LanguageIdentifier(element));
  }
  add(messages);
  if (languages.empty()) add("en");
  return languages;
}

}  // namespace tessaro::platform
