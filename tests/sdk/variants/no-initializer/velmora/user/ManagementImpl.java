package velmora.user;

import velmora.testing.Sdk;

/** A management class with a constructor and not a single method. */
public class ManagementImpl {
    public ManagementImpl() {
        Sdk.constructed();
    }
}
