// A plug-in of another release: it lacks every function after the first few.
#define PLUGIN extern "C" __attribute__((visibility("default")))

PLUGIN void registerDebugCallback(void (*)(const char*)) {}
PLUGIN void printDebug(bool) {}
PLUGIN void init() {}
PLUGIN void initClientWithCustomServer(const char*, unsigned) {}
PLUGIN void shutDown() {}
