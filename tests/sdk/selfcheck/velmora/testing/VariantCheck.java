package velmora.testing;

import java.io.IOException;
import java.io.InputStream;
import java.lang.invoke.MethodHandle;
import java.lang.invoke.MethodHandles;
import java.lang.invoke.MethodType;
import java.lang.reflect.InvocationTargetException;
import java.nio.charset.StandardCharsets;

/**
 * Proves that a variant jar breaks exactly what its name says, using
 * reflection only (the variants lack classes that a direct reference would
 * need). Usage: VariantCheck &lt;variant name&gt;, with that jar on the class path.
 */
public final class VariantCheck {
    private static final String MANAGEMENT = "velmora.user.ManagementImpl";

    private VariantCheck() {
    }

    public static void main(String[] args) throws Throwable {
        String variant = args[0];
        Sdk.reset();
        switch (variant) {
            case "missing-class":
                expect(!present(MANAGEMENT), "no management class");
                expect(present("velmora.ManagementImpl"), "a near miss in another package");
                break;
            case "no-constructor":
                expect(!hasConstructor(), "no no-argument constructor");
                expect(management().getConstructor(int.class) != null, "only the int constructor");
                break;
            case "no-initializer":
                expect(management().getDeclaredMethods().length == 0, "no methods at all");
                construct();
                expect(Sdk.instances() == 1, "construction counted");
                break;
            case "constructor-throws":
                try {
                    construct();
                    expect(false, "construction throws");
                } catch (InvocationTargetException e) {
                    expect(e.getCause() instanceof IllegalStateException, "construction throws: " + e.getCause());
                }
                expect(Sdk.instances() == 1, "the constructor ran before throwing");
                break;
            case "peach-missing":
            case "handler-missing":
                boolean wrapper = variant.equals("handler-missing");
                expect(present("velmora.user.PeachWrapper") == wrapper, "PeachWrapper present: " + wrapper);
                expect(!present("velmora.user.NativeFunctionCaller"), "no NativeFunctionCaller");
                expect(present("velmora.user.IntermediateResultHandler"), "handler interface kept");
                // Core reflection would resolve every signature and trip over the
                // missing classes; a method handle resolves just the one member.
                Object m = construct();
                MethodHandle initFile = MethodHandles.publicLookup()
                        .findVirtual(management(), "initFile", MethodType.methodType(int.class));
                expect((int) initFile.invoke(m) == 0, "initFile works");
                expect(declares("getPeachWrapper", "()Lvelmora/user/PeachWrapper;"), "getPeachWrapper declared");
                expect(Sdk.journal().equals("initFile()I"), "journal still works");
                break;
            default:
                throw new IllegalArgumentException("unknown variant " + variant);
        }
        System.out.println("variant " + variant + " is as intended");
    }

    private static void expect(boolean ok, String what) {
        if (!ok) {
            System.err.println("FAIL: " + what);
            System.exit(1);
        }
    }

    private static boolean present(String name) {
        try {
            Class.forName(name);
            return true;
        } catch (ClassNotFoundException e) {
            return false;
        }
    }

    /** Looks for a name and descriptor among the constants of the management class file. */
    private static boolean declares(String name, String descriptor) throws IOException {
        try (InputStream in = ClassLoader.getSystemResourceAsStream("velmora/user/ManagementImpl.class")) {
            String constants = new String(in.readAllBytes(), StandardCharsets.ISO_8859_1);
            return constants.contains(name) && constants.contains(descriptor);
        }
    }

    private static Class<?> management() throws ClassNotFoundException {
        return Class.forName(MANAGEMENT);
    }

    private static boolean hasConstructor() throws ClassNotFoundException {
        try {
            management().getConstructor();
            return true;
        } catch (NoSuchMethodException e) {
            return false;
        }
    }

    private static Object construct() throws Exception {
        return management().getConstructor().newInstance();
    }
}
