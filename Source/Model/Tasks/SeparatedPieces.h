#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

/// Cuts a text that comes bit by bit, as a tool writes it, at a separator.
class SeparatedPieces {
  public:
    explicit SeparatedPieces(std::string separator)
        : _separator(std::move(separator)) {}

    /// Calls the visitor with each piece that the bytes complete, without its separator.
    template <class Visitor>
    void add(std::string_view bytes, Visitor visitor) {
        // What has been searched already cannot hold more than the beginning of a separator.
        size_t searched = _rest.size() - std::min(_rest.size(), _separator.size() - 1);
        _rest += bytes;
        std::string_view text = _rest;
        for (size_t end = 0; (end = text.find(_separator, searched)) != std::string_view::npos;
             searched = 0) {
            visitor(text.substr(0, end));
            text.remove_prefix(end + _separator.size());
        }
        _rest.erase(0, _rest.size() - text.size());
    }
    /// What came after the last separator.
    [[nodiscard]] std::string_view rest() const { return _rest; }

  private:
    std::string _separator;
    std::string _rest;
};
