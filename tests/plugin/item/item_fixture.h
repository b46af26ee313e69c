// An item of a real file.
#pragma once

#include "tests/plugin/fixture.h"

class ItemTest : public PluginTest {
 protected:
  // Of the file "f", which has 5 bytes.
  host::Value item() {
    tree_.file("f", "xxxxx");
    standin::setIndexedFolders({tree_.path()});
    const host::Value query = host::construct("MDQueryZNK", "kMDItemFSName == \"f\"");
    EXPECT_TRUE(host::call(query, "Execute", 1).boolean());
    return host::call(query, "ResultAtIndex", 0);
  }

  ScratchFolder tree_;
};

// A string whose bytes are no text in its encoding.
inline host::Value unconvertible() {
  return host::Value::string("\xC3\x28", host::kEncodingUtf8);
}
