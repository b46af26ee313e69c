// Hosts on both sides of 2013.9, up to which arrays are read and written where they lie, if the host shows
// their storage.
#pragma once

#include <ostream>

#include "tests/plugin/fixture.h"

struct ArrayAccess {
  double version;
  bool storage;
};
inline void PrintTo(const ArrayAccess& access, std::ostream* out) {
  *out << "host " << access.version << (access.storage ? " with" : " without") << " storage";
}
inline const ArrayAccess kArrayAccesses[] = {{2012.0, true},  {2013.9, true},   {2013.9, false},
                                             {2013.91, true}, {2013.91, false}, {2014.1, true},
                                             {2014.1, false}};

// Tests of this kind in such a host.
template <typename Test>
class WithArrayAccess : public Test, public testing::WithParamInterface<ArrayAccess> {
 protected:
  void SetUp() override {
    host::Settings settings = settingsOf(GetParam().version);
    settings.directArrayStorage = GetParam().storage;
    this->start(settings);
  }
};
