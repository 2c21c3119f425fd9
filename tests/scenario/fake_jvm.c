/* A runtime library with two of the three Invocation API entry points; start-up stops at the missing third. */
int JNI_CreateJavaVM(void) { return -1; }
int JNI_GetDefaultJavaVMInitArgs(void) { return -1; }
