// Part of the program only where it is built with the sanitizers. The plug-in keeps the framework that it
// loads at start-up for the life of the process; once its file is closed, the leak sanitizer loses sight of
// that.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:CFBundleCreate\n";
}

extern "C" const char* __lsan_default_options() {
  return "print_suppressions=0";
}
