package velmora;

/**
 * A management class in the wrong package: velmora/user/ManagementImpl does
 * not exist in this jar, although a class of the same simple name does.
 */
public class ManagementImpl {
    public ManagementImpl() {
    }

    public int initFile() {
        return 0;
    }
}
