package velmora.testing;

import java.lang.management.ManagementFactory;
import java.util.*;
import java.util.stream.Collectors;
import velmora.user.IntermediateResultHandler;

/**
 * Journal and script of the SDK test double. Every generated method passes
 * its name and JNI descriptor and its arguments to {@link #answer} and turns
 * the text it returns into its result; the journal entry is that key followed
 * by the rendered arguments:
 *
 * <pre>createJob(I[Ljava/lang/String;)I 7, ["a", null]</pre>
 *
 * int and long in decimal, boolean as true/false, a String quoted (newline and
 * carriage return as \n and \r), a String[] as ["a", "b"], null as null, any
 * other object by the simple name of its class.
 *
 * <p>Outcomes are scripted per name or per name+descriptor (which wins), one per
 * call, the last staying in force: "throw" throws a RuntimeException, "null"
 * returns null from a String or object method, anything else is parsed by the
 * result type. Unscripted methods return 0, false, null or their natural object.
 * An IntermediateResultHandler argument becomes the handler {@link #fire} uses.
 * Constructors journal themselves as "<init>" and can be scripted to throw.
 * The methods the native tests call return an int, so that they share one
 * calling path there.
 *
 * <p>Benchmarks set -Dvelmora.sdk.quiet=true: nothing is journaled, scripts are
 * not read, and int and String methods return velmora.sdk.quiet.int (default 0)
 * and velmora.sdk.quiet.text (default null) without calling answer.
 */
public final class Sdk {
    public static final boolean QUIET = Boolean.getBoolean("velmora.sdk.quiet");
    public static final int QUIET_INT = Integer.getInteger("velmora.sdk.quiet.int", 0);
    public static final String QUIET_TEXT = System.getProperty("velmora.sdk.quiet.text");
    private static final List<String> entries = new ArrayList<>();
    private static final Map<String, List<String>> scripts = new HashMap<>();
    private static volatile IntermediateResultHandler handler;

    public static synchronized int reset() {
        entries.clear();
        scripts.clear();
        handler = null;
        return 0;
    }

    public static synchronized int script(String key, String... outcomes) {
        if (outcomes.length == 0) scripts.remove(key); else scripts.put(key, new ArrayList<>(Arrays.asList(outcomes)));
        return outcomes.length;
    }

    public static synchronized String journal() {
        String text = String.join("\n", entries);
        entries.clear();
        return text;
    }

    /** Live Java threads, attached native threads included. */
    public static int threads() {
        return ManagementFactory.getThreadMXBean().getThreadCount();
    }

    /** Delivers text to the registered handler on the calling thread. */
    public static int fire(String text) {
        handler.func(text);
        return 1;
    }

    /**
     * The double's peach run (PeachWrapper.execute): three intermediate results
     * for `peach` from a Java thread of its own, delivered before execute returns.
     */
    public static void progress(int peach) throws InterruptedException {
        IntermediateResultHandler target = handler;
        if (QUIET || target == null) return;
        Thread run = new Thread(() -> {
            for (int step = 1; step <= 3; step++) target.func("peach " + peach + ": step " + step + " of 3");
        }, "velmora-peach-" + peach);
        run.start();
        run.join();
    }

    /** The text of an outcome: "null" is null. */
    public static String text(String outcome) {
        return "null".equals(outcome) ? null : outcome;
    }

    /**
     * Journals a call of the method `key` with `args` and returns its scripted
     * outcome, or `unscripted` when none is scripted; "throw" throws. A handler
     * among the arguments of a call that did not throw is the one {@link #fire}
     * and {@link #progress} use.
     */
    public static String answer(String unscripted, String key, Object... args) {
        if (QUIET) return unscripted;
        StringBuilder entry = new StringBuilder(key);
        for (int k = 0; k < args.length; k++) entry.append(k == 0 ? " " : ", ").append(render(args[k]));
        String outcome = outcome(key, entry.toString());
        if ("throw".equals(outcome)) throw new RuntimeException("scripted failure in " + key.substring(0, key.indexOf('(')));
        for (Object arg : args) {
            if (arg instanceof IntermediateResultHandler) handler = (IntermediateResultHandler) arg;
        }
        return outcome == null ? unscripted : outcome;
    }

    private static synchronized String outcome(String key, String entry) {
        entries.add(entry);
        List<String> script = scripts.getOrDefault(key, scripts.get(key.substring(0, key.indexOf('('))));
        return script == null ? null : script.size() > 1 ? script.remove(0) : script.get(0);
    }

    private static String render(Object value) {
        if (value instanceof String) return '"' + ((String) value).replace("\n", "\\n").replace("\r", "\\r") + '"';
        if (value instanceof String[]) {
            return Arrays.stream((String[]) value).map(Sdk::render).collect(Collectors.joining(", ", "[", "]"));
        }
        return value == null || value instanceof Number || value instanceof Boolean ? String.valueOf(value)
                : value.getClass().getSimpleName();
    }
}
