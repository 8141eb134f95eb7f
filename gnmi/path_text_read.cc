// Reading a path's text: one pass over the bytes, each element's name and
// keys unescaped into strings that are moved into the path being built.
#include <string>
#include <utility>

#include "gnmi/path_build.h"
#include "gnmi/path_text.h"

namespace mgmtmsg {
namespace {

bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// A read that stopped on bad text, at this offset.
struct BadText {
  size_t at;
};

class PathTextReader {
 public:
  explicit PathTextReader(std::string_view text) : text_(text) {}

  // The whole text into `out`; throws BadText.
  void Read(gnmi::Path* out) {
    ReadOrigin(out);
    if (Peek('/')) ++pos_;
    while (pos_ < text_.size()) {
      ReadElem(out->mutable_elem());
      if (pos_ < text_.size()) ++pos_;  // the '/' that ended the element
    }
  }

 private:
  // `X:/` at the start, where X is read as an element name would be.
  void ReadOrigin(gnmi::Path* out) {
    std::string origin;
    const size_t end = ReadName(&origin, "/[]", true);
    const bool named = end >= 2 && text_[end - 1] == ':' && !Escaped(end - 1) && Peek('/');
    if (named) {
      origin.pop_back();
      out->mutable_origin()->swap(origin);
    } else {
      pos_ = 0;
    }
  }

  void ReadElem(PathElems* elems) {
    std::string name;
    const size_t start = pos_;
    ReadName(&name, "/[]", true);
    if (name.empty()) throw BadText{start};
    if (Peek(']')) throw BadText{pos_};
    AppendElem(elems, std::move(name));
    while (Peek('[')) ReadKey(elems);
    if (pos_ < text_.size() && !Peek('/')) throw BadText{pos_};
  }

  void ReadKey(PathElems* elems) {
    const size_t open = pos_++;
    std::string key;
    ReadName(&key, "=[]", true);
    if (pos_ == text_.size()) throw BadText{pos_};
    if (!Peek('=')) throw BadText{pos_};
    if (key.empty()) throw BadText{pos_};
    ++pos_;
    std::string value;
    ReadName(&value, "]", false);
    if (pos_ == text_.size()) throw BadText{pos_};
    ++pos_;
    if (!AddKey(elems, std::move(key), std::move(value))) throw BadText{open};
  }

  // Unescapes bytes into `out` up to the first unescaped byte of `stops` (or
  // the end), refusing unescaped whitespace when `noSpace`, and returns the
  // offset where it stopped.
  size_t ReadName(std::string* out, std::string_view stops, bool noSpace) {
    size_t run = pos_;  // start of the bytes taken as they stand
    for (; pos_ < text_.size(); ++pos_) {
      const char c = text_[pos_];
      if (c == '\\') {
        out->append(text_, run, pos_ - run);
        if (++pos_ == text_.size()) throw BadText{pos_};
        run = pos_;
      } else if (stops.find(c) != std::string_view::npos) {
        break;
      } else if (noSpace && IsSpace(c)) {
        throw BadText{pos_};
      }
    }
    out->append(text_, run, pos_ - run);
    return pos_;
  }

  bool Peek(char c) const { return pos_ < text_.size() && text_[pos_] == c; }

  // Whether the byte at `at` follows an escaping backslash.
  bool Escaped(size_t at) const {
    size_t backslashes = 0;
    while (at > backslashes && text_[at - backslashes - 1] == '\\') ++backslashes;
    return backslashes % 2 == 1;
  }

  std::string_view text_;
  size_t pos_ = 0;
};

}  // namespace

bool ReadPathText(std::string_view text, gnmi::Path* out, uint32_t* errorAt) {
  try {
    PathTextReader(text).Read(out);
    return true;
  } catch (const BadText& bad) {
    *errorAt = static_cast<uint32_t>(bad.at);
    return false;
  }
}

}  // namespace mgmtmsg
