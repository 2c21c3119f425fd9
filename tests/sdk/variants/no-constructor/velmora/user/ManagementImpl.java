package velmora.user;

/** A management class that can only be built with an argument. */
public class ManagementImpl {
    public ManagementImpl(int unused) {
    }
}
