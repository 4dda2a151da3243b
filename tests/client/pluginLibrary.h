/* The file of a plug-in, loaded into a test as its platform's hosts do it. */
#ifndef QVR_TESTS_CLIENT_PLUGIN_LIBRARY_H
#define QVR_TESTS_CLIENT_PLUGIN_LIBRARY_H

#ifdef __cplusplus
extern "C" {
#endif

/* Null when it cannot be loaded, which is said on standard error. */
void* loadPlugin(const char* file);
void* findInPlugin(void* library, const char* name);
void unloadPlugin(void* library);

#ifdef __cplusplus
}
#endif

#endif
