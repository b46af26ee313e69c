#include "macho/linker/symbols.h"

#include "macho/linker/error.h"

namespace macho {
namespace {

void addLine(std::string& text, const std::string& line) {
  if (!text.empty()) text += '\n';
  text += line;
}

}  // namespace

Symbols::Symbols(const std::vector<Object>& objects) : objects_(objects) {
  define(objects);
}

void Symbols::define(const std::vector<Object>& objects) {
  for (uint32_t i = 0; i < objects.size(); ++i) {
    for (const InputSymbol& symbol : objects[i].symbols) {
      if (!symbol.defined || !symbol.global) continue;
      const Location location = {i, symbol.section, static_cast<int32_t>(symbol.offset)};
      const auto [entry, isNew] = definitions_.emplace(symbol.name, Definition{location, &symbol});
      if (isNew || symbol.weakDefinition) continue;
      Definition& first = entry->second;
      if (!first.symbol->weakDefinition) {
        throw LinkError(objects[i].path, "defines " + symbol.name + ", which " +
                                             objects[first.location.object].path +
                                             " defines too; rename one of them, or make it static");
      }
      first = {location, &symbol};
    }
  }
}

std::map<std::string, Symbols::Reference> Symbols::undefinedReferences() const {
  std::map<std::string, Reference> references;
  for (const Object& object : objects_) {
    const auto note = [&](const Place& place) {
      if (place.kind != Place::kSymbol) return;
      const InputSymbol& symbol = object.symbols[place.index];
      if (symbol.defined || !symbol.global || definitions_.contains(symbol.name)) return;
      const auto [entry, isNew] = references.emplace(symbol.name, Reference{&object, symbol.weakReference});
      entry->second.weak = entry->second.weak && symbol.weakReference;
    };
    for (const InputSection& section : object.sections) {
      if (section.dropped) continue;
      for (const Place& place : section.pointers) note(place);
      for (const Fixup& fixup : section.fixups) note(fixup.target);
    }
  }
  return references;
}

void Symbols::import(const ImportList& list) {
  std::string faults;
  for (const auto& [name, reference] : undefinedReferences()) {
    const auto listed = list.symbols.find(name);
    if (listed == list.symbols.end()) {
      addLine(faults, reference.object->path + ": undefined symbol " + name + "; define it, or list it in " +
                          list.path);
      continue;
    }
    importIndex_[name] = static_cast<uint32_t>(imports_.size());
    imports_.push_back({name, listed->second, reference.weak});
  }
  checkAllUsed(list, faults);
  if (!faults.empty()) throw LinkError(faults);
}

// The list is to say what the dylib imports, no more.
void Symbols::checkAllUsed(const ImportList& list, std::string& faults) const {
  std::vector<bool> named(list.libraries.size());
  for (const auto& [name, library] : list.symbols) {
    named[library] = true;
    if (!importIndex_.contains(name)) {
      addLine(faults, list.path + ": " + name + " is listed but not used; remove it");
    }
  }
  for (size_t i = 0; i < named.size(); ++i) {
    if (named[i]) continue;
    addLine(faults,
            list.path + ": " + list.libraries[i].installName + " is listed without a symbol; remove it");
  }
}

const Location* Symbols::definition(const std::string& name) const {
  const auto found = definitions_.find(name);
  return found == definitions_.end() ? nullptr : &found->second.location;
}

const InputSymbol* Symbols::definingSymbol(const std::string& name) const {
  const auto found = definitions_.find(name);
  return found == definitions_.end() ? nullptr : found->second.symbol;
}

std::optional<Location> Symbols::locate(uint32_t object, const Place& place) const {
  if (place.kind == Place::kSection) return Location{object, place.index, place.offset};
  const InputSymbol& symbol = objects_[object].symbols[place.index];
  if (symbol.defined && !symbol.global) {
    return Location{object, symbol.section, static_cast<int32_t>(symbol.offset) + place.offset};
  }
  const Location* found = definition(symbol.name);
  if (!found) return std::nullopt;
  return Location{found->object, found->section, found->offset + place.offset};
}

Symbols::Target Symbols::resolve(uint32_t object, const Place& place) const {
  if (const auto location = locate(object, place)) return {Target::kLocation, *location, 0, 0};
  const InputSymbol& symbol = objects_[object].symbols[place.index];
  const auto import = importIndex_.find(symbol.name);
  if (import == importIndex_.end()) {
    throw LinkError(objects_[object].path, "malformed: it refers to " + symbol.name +
                                               ", which is no symbol of the program; compile it again");
  }
  return {Target::kImport, {}, import->second, place.offset};
}

}  // namespace macho
