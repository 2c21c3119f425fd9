/* A runtime library with two of the three Invocation API entry points. */
int JNI_CreateJavaVM(void **vm, void **env, void *args) {
    (void)vm; (void)env; (void)args;
    return -1;
}
int JNI_GetDefaultJavaVMInitArgs(void *args) {
    (void)args;
    return -1;
}
