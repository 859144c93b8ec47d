#include "Platform/HTMLText.h"

#include <libxml/HTMLparser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "Base/Owned.h"

namespace tessaro::platform {

namespace {

// The parser counts in int.
constexpr std::size_t kLargestPage = std::numeric_limits<int>::max() - 1;

// The separators around an element's text.
enum class Flow { Inline, Block, Paragraph, Hidden, Break, Cell, Item, Verbatim };

struct Element {
  std::string_view name;
  Flow flow;
};

constexpr Element kElements[] = {
    {"address", Flow::Block},   {"article", Flow::Block}, {"aside", Flow::Block},  {"blockquote", Flow::Block},
    {"body", Flow::Block},      {"br", Flow::Break},      {"center", Flow::Block}, {"dd", Flow::Block},
    {"div", Flow::Block},       {"dl", Flow::Block},      {"dt", Flow::Block},     {"fieldset", Flow::Block},
    {"figure", Flow::Block},    {"footer", Flow::Block},  {"form", Flow::Block},   {"h1", Flow::Paragraph},
    {"h2", Flow::Paragraph},    {"h3", Flow::Paragraph},  {"h4", Flow::Paragraph}, {"h5", Flow::Paragraph},
    {"h6", Flow::Paragraph},    {"head", Flow::Hidden},   {"header", Flow::Block}, {"hr", Flow::Block},
    {"li", Flow::Item},         {"main", Flow::Block},    {"nav", Flow::Block},    {"ol", Flow::Block},
    {"option", Flow::Hidden},   {"p", Flow::Paragraph},   {"pre", Flow::Verbatim}, {"script", Flow::Hidden},
    {"section", Flow::Block},   {"style", Flow::Hidden},  {"table", Flow::Block},  {"td", Flow::Cell},
    {"template", Flow::Hidden}, {"th", Flow::Cell},       {"title", Flow::Hidden}, {"tr", Flow::Block},
    {"ul", Flow::Block},
};

Flow FlowOf(std::string_view name) {
  const auto* found =
      std::lower_bound(std::begin(kElements), std::end(kElements), name,
                       [](const Element& element, std::string_view text) { return element.name < text; });
  return found != std::end(kElements) && found->name == name ? found->flow : Flow::Inline;
}

bool IsSpace(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\f'; }

class Writer {
 public:
  void Start(std::string_view name) {
    const Flow flow = FlowOf(name);
    if (flow == Flow::Hidden) ++hidden_;
    if (flow == Flow::Verbatim) ++verbatim_;
    if (flow == Flow::Break && hidden_ == 0) NewLine();
    if (flow == Flow::Cell) Separate();
    if (IsOnLinesOfItsOwn(flow)) EndLine();
    if (flow == Flow::Item) Write("• ");
  }

  void End(std::string_view name) {
    const Flow flow = FlowOf(name);
    if (flow == Flow::Hidden && hidden_ > 0) --hidden_;
    if (flow == Flow::Verbatim && verbatim_ > 0) --verbatim_;
    if (IsOnLinesOfItsOwn(flow)) EndLine();
    if (flow == Flow::Paragraph) paragraphEnded_ = true;
  }

  void Write(std::string_view text) {
    if (hidden_ > 0) return;
    while (!text.empty()) {
      const bool isSpace = IsSpace(text.front());
      const auto end = std::find_if(text.begin(), text.end(), [&](char c) { return IsSpace(c) != isSpace; });
      const std::string_view run(text.data(), static_cast<std::size_t>(end - text.begin()));
      if (isSpace && verbatim_ == 0) {
        hasSpace_ = true;
      } else {
        Append(run);
      }
      text.remove_prefix(run.size());
    }
  }

  // Without a final line end: the parser doesn't report whether there was one.
  [[nodiscard]] std::string Text() && {
    while (text_.ends_with('\n')) text_.pop_back();
    return std::move(text_);
  }

 private:
  static bool IsOnLinesOfItsOwn(Flow flow) {
    return flow == Flow::Block || flow == Flow::Paragraph || flow == Flow::Item || flow == Flow::Verbatim;
  }

  [[nodiscard]] bool IsAtLineStart() const { return text_.empty() || text_.back() == '\n'; }

  void Append(std::string_view run) {
    if (paragraphEnded_ && !text_.empty()) text_ += '\n';
    paragraphEnded_ = false;
    if (hasSpace_ && !IsAtLineStart() && text_.back() != '\t') text_ += ' ';
    hasSpace_ = false;
    text_ += run;
  }

  void EndLine() {
    hasSpace_ = false;
    if (!IsAtLineStart()) text_ += '\n';
  }

  void NewLine() {
    hasSpace_ = false;
    text_ += '\n';
  }

  void Separate() {
    hasSpace_ = false;
    if (!IsAtLineStart()) text_ += '\t';
  }

  std::string text_;
  int hidden_ = 0;
  int verbatim_ = 0;
  bool hasSpace_ = false;
  bool paragraphEnded_ = false;
};

std::string_view View(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

Writer& WriterOf(void* context) { return *static_cast<Writer*>(context); }

htmlSAXHandler Handler() {
  htmlSAXHandler handler{};
  handler.startElement = [](void* context, const xmlChar* name, const xmlChar**) {
    WriterOf(context).Start(View(name));
  };
  handler.endElement = [](void* context, const xmlChar* name) { WriterOf(context).End(View(name)); };
  handler.characters = [](void* context, const xmlChar* text, int length) {
    WriterOf(context).Write({reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)});
  };
  handler.ignorableWhitespace = handler.characters;
  return handler;
}

using Parser = Owned<htmlParserCtxt, htmlFreeParserCtxt>;

}  // namespace

// SAX: no tree, which hostile HTML could make too deep or too large.
std::string TextFromHTML(std::string_view html) noexcept {
  if (html.empty() || html.size() > kLargestPage) return {};
  const Parser parser(htmlCreateMemoryParserCtxt(html.data(), static_cast<int>(html.size())));
  if (parser == nullptr) return {};
  Writer writer;
  htmlSAXHandler handler = Handler();
  // The parser frees its own handler, not ours.
  std::swap(*parser->sax, handler);
  parser->userData = &writer;
  htmlCtxtUseOptions(parser.get(), HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET | HTML_PARSE_RECOVER);
  xmlSwitchEncoding(parser.get(), XML_CHAR_ENCODING_UTF8);
  htmlParseDocument(parser.get());
  return std::move(writer).Text();
}

}  // namespace tessaro::platform
