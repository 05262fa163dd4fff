// An aligned table of text.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace media_accessor_tool {

/// Columns padded to their widest cell, two spaces apart. Without rows it is empty.
class Table {
 public:
  explicit Table(std::vector<std::string> header) : header_(std::move(header)) {}

  void AddColumn(std::string name) { header_.push_back(std::move(name)); }

  /// Cells beyond the header's are left out.
  void AddRow(std::vector<std::string> cells) {
    cells.resize(header_.size());
    rows_.push_back(std::move(cells));
  }

  std::string Text() const {
    if (rows_.empty()) return {};
    std::vector<std::size_t> widths(header_.size(), 0);
    const auto widen = [&](const std::vector<std::string>& cells) {
      for (std::size_t i = 0; i < cells.size(); ++i) {
        widths[i] = std::max(widths[i], Width(cells[i]));
      }
    };
    widen(header_);
    for (const auto& row : rows_) widen(row);
    std::string text = Line(header_, widths);
    for (const auto& row : rows_) text += Line(row, widths);
    return text;
  }

 private:
  // In characters: the bytes that do not continue a UTF-8 sequence.
  static std::size_t Width(const std::string& cell) {
    return static_cast<std::size_t>(std::count_if(cell.begin(), cell.end(), [](char byte) {
      return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
    }));
  }

  static std::string Line(const std::vector<std::string>& cells,
                          const std::vector<std::size_t>& widths) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      line += cells[i];
      if (i + 1 < cells.size()) line.append(widths[i] - Width(cells[i]) + 2, ' ');
    }
    return line + "\n";
  }

  std::vector<std::string> header_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace media_accessor_tool
