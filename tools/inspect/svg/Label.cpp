#include <tools/inspect/svg/Label.hpp>

#include <algorithm>

namespace lumo::inspect {

void arrange(std::vector<Label>& column, double from, double to) {
  std::sort(column.begin(), column.end(), [](const Label& a, const Label& b) { return a.at.y() < b.at.y(); });
  struct Block {
    std::size_t count;
    double wanted;  ///< the sum of the heights at which the block would begin for each of its labels
    double height;
    double begin(double least, double most) const {
      return std::max(least, std::min(wanted / static_cast<double>(count), most - height));
    }
  };
  std::vector<Block> blocks;
  for (const Label& label : column) {
    Block block{1, label.at.y() - label.height() / 2, label.height()};
    while (!blocks.empty() && blocks.back().begin(from, to) + blocks.back().height > block.begin(from, to)) {
      const Block& above = blocks.back();
      block.wanted += above.wanted - static_cast<double>(block.count) * above.height;
      block.count += above.count;
      block.height += above.height;
      blocks.pop_back();
    }
    blocks.push_back(block);
  }
  auto label = column.begin();
  for (const Block& block : blocks) {
    double y = block.begin(from, to);
    for (std::size_t i = 0; i < block.count; ++i, ++label) {
      label->y = y + label->height() / 2;
      y += label->height();
    }
  }
}

}  // namespace lumo::inspect
