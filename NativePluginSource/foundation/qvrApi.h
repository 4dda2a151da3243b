/* The one mark of an exported symbol.
 *
 * Everything is compiled with hidden visibility; what carries QVR_API is what a host or a server
 * program may use. C and C++.
 */
#ifndef QVR_FOUNDATION_QVR_API_H
#define QVR_FOUNDATION_QVR_API_H

#define QVR_API __attribute__((visibility("default")))

#endif
