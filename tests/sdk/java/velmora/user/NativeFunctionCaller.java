package velmora.user;

/**
 * Handler whose {@code func} is implemented in native code: the bridge binds it
 * with RegisterNatives before handing an instance to the peach wrapper.
 */
public class NativeFunctionCaller implements IntermediateResultHandler {
    @Override
    public native void func(String text);
}
