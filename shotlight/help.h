// The texts that --help prints.
#pragma once

namespace shotlight {

extern const char generalHelp[];
extern const char findHelp[];
extern const char attrsHelp[];
extern const char schemaHelp[];
extern const char keysHelp[];
extern const char programHelp[];
extern const char storeHelp[];
extern const char windowHelp[];

}  // namespace shotlight
