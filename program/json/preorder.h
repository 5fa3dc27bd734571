// SPDX-License-Identifier: Apache-2.0
// Walks a parser's tree in the order of its text.

#pragma once

#include <cstddef>
#include <vector>

namespace headsetmgmt::program::json {

/// Calls `visit(node, number)` for each value of a tree, each before its own members or elements;
/// `number` is the value's number in the `Index` of the text. A node has the links `child` and
/// `next`, as cJSON's nodes have; what follows `root` itself is not part of the tree.
template <class Node, class Visit>
void for_each_value(const Node* root, Visit visit) {
    std::vector<const Node*> holders;
    std::size_t number = 0;
    const Node* node = root;
    while (node != nullptr) {
        visit(*node, number);
        ++number;
        if (node->child != nullptr) {
            holders.push_back(node);
            node = node->child;
            continue;
        }
        while (!holders.empty() && node->next == nullptr) {
            node = holders.back();
            holders.pop_back();
        }
        node = holders.empty() ? nullptr : node->next;
    }
}

}  // namespace headsetmgmt::program::json
