package velmora.user;

/** Receives the intermediate results of a peach run, one text per call. */
public interface IntermediateResultHandler {
    void func(String text);
}
