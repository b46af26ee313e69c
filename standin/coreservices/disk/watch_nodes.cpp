#include "standin/coreservices/disk/watch_nodes.h"

#include <utility>

namespace standin::metadata {

WatchNodes::~WatchNodes() {
  detachChildren(top_);
  prune();
}

void WatchNodes::setTop(int watch, WatchRole role) {
  byWatch_.erase(top_.watch);
  top_.watch = watch;
  top_.role = role;
  if (watch != WatchNode::kNoWatch) byWatch_[watch] = &top_;
}

WatchNode* WatchNodes::find(int watch) const {
  const auto it = byWatch_.find(watch);
  return it == byWatch_.end() ? nullptr : it->second;
}

WatchNode* WatchNodes::child(const WatchNode& parent, const std::string& name) {
  const auto it = parent.children.find(name);
  return it == parent.children.end() ? nullptr : it->second.get();
}

WatchNode& WatchNodes::put(WatchNode& parent, const std::string& name, int watch, WatchRole role) {
  WatchNode* node = find(watch);
  WatchNode* const occupant = child(parent, name);
  if (occupant && occupant->watch == watch) {
    node = occupant;
  } else {
    if (occupant) detach(*occupant);
    std::unique_ptr<WatchNode> owned;
    if (node) {
      owned = std::move(node->parent->children.extract(*node->name).mapped());
    } else {
      owned = std::make_unique<WatchNode>();
      node = owned.get();
      node->watch = watch;
      if (watch != WatchNode::kNoWatch) byWatch_[watch] = node;
    }
    attach(parent, name, std::move(owned));
  }
  node->role = role;
  return *node;
}

void WatchNodes::attach(WatchNode& parent, const std::string& name, std::unique_ptr<WatchNode> node) {
  const auto it = parent.children.emplace(name, std::move(node)).first;
  it->second->parent = &parent;
  it->second->name = &it->first;
}

void WatchNodes::detach(WatchNode& node) {
  if (&node == &top_) return;
  std::unique_ptr<WatchNode> owned = std::move(node.parent->children.extract(*node.name).mapped());
  attach(detached_, std::to_string(++detachments_), std::move(owned));
}

void WatchNodes::detachChildren(WatchNode& node) {
  while (!node.children.empty()) detach(*node.children.begin()->second);
}

std::vector<int> WatchNodes::prune() {
  std::vector<int> watches;
  std::vector<Children> doomed;  // level by level: destroying a deep tree at once would need a deep stack
  doomed.push_back(std::move(detached_.children));
  while (!doomed.empty()) {
    Children children = std::move(doomed.back());
    doomed.pop_back();
    for (auto& [name, node] : children) {
      if (node->watch != WatchNode::kNoWatch) {
        watches.push_back(node->watch);
        byWatch_.erase(node->watch);
      }
      if (!node->children.empty()) doomed.push_back(std::move(node->children));
    }
  }
  detached_.children.clear();
  detachments_ = 0;
  return watches;
}

std::optional<std::string> WatchNodes::path(const WatchNode& node) const {
  size_t length = 0;
  const WatchNode* ancestor = &node;
  for (; ancestor->parent; ancestor = ancestor->parent) length += ancestor->name->size() + 1;
  if (ancestor != &top_) return {};
  std::string path(length, '/');
  for (ancestor = &node; ancestor->parent; ancestor = ancestor->parent) {
    length -= ancestor->name->size();
    path.replace(length, ancestor->name->size(), *ancestor->name);
    --length;
  }
  return path;
}

bool WatchNodes::isWithin(const WatchNode& node, const WatchNode& ancestor) {
  for (const WatchNode* at = &node; at; at = at->parent) {
    if (at == &ancestor) return true;
  }
  return false;
}

}  // namespace standin::metadata
