#include "tests/macho/toolbox.h"

#include <sys/wait.h>

#include <cstdio>
#include <fstream>
#include <iterator>

#include "tests/support/build_folder.h"

namespace toolbox {
namespace {

std::string quoted(const std::string& word) {
  std::string result = "'";
  for (const char c : word) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return result + "'";
}

std::vector<std::string> operator+(std::vector<std::string> a, const std::vector<std::string>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

}  // namespace

Outcome run(const std::vector<std::string>& command) {
  std::string line;
  for (const std::string& word : command) line += quoted(word) + " ";
  FILE* pipe = popen((line + "2>&1 </dev/null").c_str(), "r");
  Outcome result = {-1, ""};
  if (!pipe) return result;
  char buffer[4096];
  while (const size_t count = fread(buffer, 1, sizeof buffer, pipe)) result.output.append(buffer, count);
  const int status = pclose(pipe);
  if (WIFEXITED(status)) result.status = WEXITSTATUS(status);
  return result;
}

std::string linker() {
  return builtFile("bin/macho-link");
}

std::string readFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  EXPECT_TRUE(stream) << path;
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

void writeFile(const std::string& path, const std::string& contents) {
  std::ofstream stream(path, std::ios::binary);
  stream << contents;
  ASSERT_TRUE(stream.flush()) << path;
}

std::string Workshop::write(const std::string& name, const std::string& contents) const {
  writeFile(path(name), contents);
  return path(name);
}

std::string Workshop::compile(const std::string& name, const std::string& source,
                              const std::vector<std::string>& flags) const {
  const std::vector<std::string> usual = {MACHO_CLANG,
                                          "-target",
                                          "i386-apple-macosx10.6",
                                          "-std=c++17",
                                          "-O2",
                                          "-ffreestanding",
                                          "-fvisibility=hidden",
                                          "-fvisibility-inlines-hidden",
                                          "-fno-threadsafe-statics",
                                          "-fno-stack-protector",
                                          "-nostdinc++",
                                          "-nostdlibinc",
                                          "-isystem",
                                          FREESTANDING_HEADERS,
                                          "-c"};
  const std::string file = write(name + ".cpp", kEntry + source);
  const Outcome compiled = run(usual + flags + std::vector<std::string>{file, "-o", path(name + ".o")});
  EXPECT_EQ(0, compiled.status) << compiled.output;
  return path(name + ".o");
}

std::string Workshop::assemble(const std::string& name, const std::string& source) const {
  const std::string file = write(name + ".s", source);
  const Outcome assembled =
      run({MACHO_CLANG, "-target", "i386-apple-macosx10.6", "-c", file, "-o", path(name + ".o")});
  EXPECT_EQ(0, assembled.status) << assembled.output;
  return path(name + ".o");
}

std::string Workshop::importList(const std::vector<std::string>& symbols) const {
  std::string text;
  if (!symbols.empty()) text = "library /usr/lib/libtest.dylib 1.2.3 1\n";
  for (const std::string& symbol : symbols) text += symbol + "\n";
  return write("imports.txt", text);
}

Outcome Workshop::link(const std::vector<std::string>& objects, const std::vector<std::string>& imports,
                       const std::vector<std::string>& exported) const {
  std::vector<std::string> command = {linker(),   "-o",       path("test.dylib"), "-install_name",
                                      "@rpath/t", "-imports", importList(imports)};
  for (const std::string& symbol : exported)
    command = command + std::vector<std::string>{"-exported", symbol};
  return run(command + objects);
}

std::string Workshop::build(const std::string& source, const std::vector<std::string>& imports,
                            const std::vector<std::string>& exported) const {
  const Outcome linked = link({compile("test", source)}, imports, exported);
  EXPECT_EQ(0, linked.status);
  EXPECT_EQ("", linked.output);
  return path("test.dylib");
}

std::string loadError(const std::string& path, const macho::LoadOptions& options) {
  try {
    macho::load(path, options);
    return "(loaded)";
  } catch (const macho::LoadError& error) {
    return error.what();
  }
}

std::string loadContentsError(std::string_view contents, const macho::LoadOptions& options) {
  try {
    macho::loadContents("damaged.dylib", {reinterpret_cast<const uint8_t*>(contents.data()), contents.size()},
                        options);
    return "(loaded)";
  } catch (const macho::LoadError& error) {
    EXPECT_TRUE(std::string_view(error.what()).starts_with("damaged.dylib: ")) << error.what();
    return error.what();
  }
}

}  // namespace toolbox
