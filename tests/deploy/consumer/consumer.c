/* A host program built against an installed libvelmora (CMake package,
 * pkg-config or plain cc): the version macros agree with each other, and the
 * installed library starts Java with the SDK jars beside it. */
#include <velmora.h>

#include <stdio.h>
#include <string.h>

#if VELMORA_VERSION_NUM < VELMORA_VERSION_CHECK(1, 0, 0)
#error "libvelmora 1.0 or later is needed"
#endif

int main(void) {
    char parts[32];
    snprintf(parts, sizeof parts, "%d.%d.%d", VELMORA_VERSION_MAJOR, VELMORA_VERSION_MINOR, VELMORA_VERSION_PATCH);
    if (strcmp(parts, VELMORA_VERSION_STRING) != 0) return 1;
    int status = velmora_init();
    if (status != VELMORA_STATUS_OK) {
        fprintf(stderr, "velmora_init: %d\n", status);
        return 2;
    }
    printf("consumer %s: started\n", VELMORA_VERSION_STRING);
    return 0;
}
