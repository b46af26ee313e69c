// A plug-in that starts and registers nothing.
extern "C" __attribute__((visibility("default"))) void REALPluginMain(void* (*)(const char*)) {}
