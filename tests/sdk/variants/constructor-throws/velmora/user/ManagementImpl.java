package velmora.user;

import velmora.testing.Sdk;

/** A management class whose construction always fails (after being counted). */
public class ManagementImpl {
    public ManagementImpl() {
        Sdk.constructed();
        throw new IllegalStateException("management object refuses to be constructed");
    }

    public int initFile() {
        return Sdk.i();
    }
}
