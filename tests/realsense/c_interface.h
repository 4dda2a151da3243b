/* The public headers seen by a C compiler. */
#ifndef CAMERA_TEST_C_INTERFACE_H
#define CAMERA_TEST_C_INTERFACE_H

#ifdef __cplusplus
extern "C" {
#endif

/* 0, or the number of the first check that failed. */
int checkInterfaceFromC(void);

#ifdef __cplusplus
}
#endif

#endif
