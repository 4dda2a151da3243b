// A program without any of the protections, for the check to find fault with.
#include <stdlib.h>

int main(void) {
    return EXIT_SUCCESS;
}
