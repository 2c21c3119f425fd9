package velmora.testing;

import java.lang.ref.WeakReference;

import java.util.ArrayList;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.atomic.AtomicInteger;
import java.util.concurrent.atomic.AtomicReference;
import velmora.user.IntermediateResultHandler;

/**
 * Journal and script of the SDK test double.
 *
 * <p>Every method of the double is one call of a recorder ({@link #i}, {@link #z},
 * {@link #j}, {@link #s}, {@link #v}, {@link #o}). The recorder identifies its
 * caller by walking the stack, so the journal shows the name and JNI descriptor
 * of the overload that was really invoked, followed by the rendered arguments:
 *
 * <pre>createJob(I[Ljava/lang/String;)I 7, ["a", "b"]</pre>
 *
 * Rendering: int and long in decimal, boolean as true/false, a String in double
 * quotes (newline and carriage return written as \n and \r so that an entry is
 * one line), a String[] as ["a", "b"], null as null, any other object as the
 * simple name of its class.
 *
 * <p>Outcomes are scripted per method name or per name+descriptor (the latter
 * wins). A script is a queue: each call takes the next outcome, the last one
 * stays in force. "throw" throws a RuntimeException; "null" returns null from a
 * String or object method; any other text is parsed by the return type (int,
 * long, true/false, a String verbatim) and ignored by void methods. Methods
 * without a script return 0, false, null or nothing; the object methods return
 * their natural object.
 *
 * <p>The control methods are called by the native tests through JNI.
 */
public final class Sdk {
    private static final String SELF = Sdk.class.getName();
    private static final StackWalker WALKER = StackWalker.getInstance(StackWalker.Option.RETAIN_CLASS_REFERENCE);

    private static final List<String> entries = new ArrayList<>();
    private static final Map<String, Script> scripts = new HashMap<>();
    private static int instances;
    /**
     * Benchmarks set -Dvelmora.sdk.quiet=true: nothing is journaled, scripts are not read, and int and
     * String methods return velmora.sdk.quiet.int (default 0) and velmora.sdk.quiet.text (default null).
     */
    private static final boolean QUIET = Boolean.getBoolean("velmora.sdk.quiet");
    private static final int QUIET_INT = Integer.getInteger("velmora.sdk.quiet.int", 0);
    private static final String QUIET_TEXT = System.getProperty("velmora.sdk.quiet.text");
    private static volatile WeakReference<Object> lastArgument = new WeakReference<>(null);
    private static volatile IntermediateResultHandler handler;

    private Sdk() {
    }

    // ---- control -------------------------------------------------------

    /** Forgets journal, scripts, the instance count and the registered result handler. */
    public static synchronized void reset() {
        entries.clear();
        scripts.clear();
        instances = 0;
        handler = null;
    }

    /**
     * Scripts the outcomes of the method {@code key} ("createJob" or
     * "createJob(I[Ljava/lang/String;)I"). No outcomes removes the script.
     */
    public static synchronized void script(String key, String... outcomes) {
        if (outcomes == null || outcomes.length == 0) {
            scripts.remove(key);
        } else {
            scripts.put(key, new Script(outcomes.clone()));
        }
    }

    /** All entries recorded since the last reset or read, one per line; clears them. */
    public static synchronized String journal() {
        String text = String.join("\n", entries);
        entries.clear();
        return text;
    }

    /** Number of management objects constructed since the last reset. */
    /**
     * Whether the last object argument that reached the double (a String or an
     * array the library made) has been garbage-collected: true once nothing,
     * not even a forgotten JNI local reference, keeps it alive.
     */
    public static boolean lastArgumentCollected() throws InterruptedException {
        WeakReference<Object> last = lastArgument;
        for (int attempt = 0; attempt < 20 && last.get() != null; attempt++) {
            System.gc();
            Thread.sleep(10);
        }
        return last.get() == null;
    }

    public static synchronized int instances() {
        return instances;
    }

    /** Delivers one intermediate result to the registered handler on the calling thread. */
    public static void fire(String text) {
        IntermediateResultHandler current = handler;
        if (current == null) {
            throw new IllegalStateException("no intermediate result handler registered");
        }
        current.func(text);
    }

    /**
     * Delivers {@code perThread} results from each of {@code threads} new threads,
     * text prefix + thread + ":" + index, reading the registered handler anew for
     * every delivery. Returns the number of results delivered (a result finding no
     * handler is skipped); a failure inside a handler is rethrown after all joined.
     */
    public static int fireConcurrently(int threads, int perThread, String prefix)
            throws InterruptedException {
        AtomicInteger delivered = new AtomicInteger();
        AtomicReference<Throwable> failure = new AtomicReference<>();
        CountDownLatch start = new CountDownLatch(1);
        Thread[] workers = new Thread[threads];
        for (int t = 0; t < threads; t++) {
            String threadPrefix = prefix + t + ":";
            workers[t] = new Thread(() -> {
                try {
                    start.await();
                    for (int i = 0; i < perThread; i++) {
                        IntermediateResultHandler current = handler;
                        if (current != null) {
                            current.func(threadPrefix + i);
                            delivered.incrementAndGet();
                        }
                    }
                } catch (Throwable e) {
                    failure.compareAndSet(null, e);
                }
            }, "sdk-result-" + t);
            workers[t].start();
        }
        start.countDown();
        for (Thread worker : workers) {
            worker.join();
        }
        if (failure.get() != null) {
            throw new IllegalStateException("intermediate result delivery failed", failure.get());
        }
        return delivered.get();
    }

    // ---- hooks of the double -------------------------------------------

    /** Counts one management object construction. */
    public static synchronized void constructed() {
        instances++;
    }

    public static int i(Object... args) {
        if (QUIET) {
            return QUIET_INT;
        }
        String outcome = record('I', args);
        if (outcome == null) {
            return 0;
        }
        try {
            return Integer.parseInt(outcome);
        } catch (NumberFormatException e) {
            throw badOutcome(outcome);
        }
    }

    public static long j(Object... args) {
        String outcome = record('J', args);
        if (outcome == null) {
            return 0L;
        }
        try {
            return Long.parseLong(outcome);
        } catch (NumberFormatException e) {
            throw badOutcome(outcome);
        }
    }

    public static boolean z(Object... args) {
        String outcome = record('Z', args);
        if (outcome == null || outcome.equals("false")) {
            return false;
        }
        if (outcome.equals("true")) {
            return true;
        }
        throw badOutcome(outcome);
    }

    public static String s(Object... args) {
        if (QUIET) {
            return QUIET_TEXT;
        }
        String outcome = record('S', args);
        return outcome == null || outcome.equals("null") ? null : outcome;
    }

    public static void v(Object... args) {
        record('V', args);
    }

    /** Object result: {@code natural} unless scripted to "null" (or "throw"). */
    public static <T> T o(T natural, Object... args) {
        String outcome = record('L', args);
        if (outcome == null) {
            return natural;
        }
        if (outcome.equals("null")) {
            return null;
        }
        throw badOutcome(outcome);
    }

    /** setIntermediateResultHandler: records, applies the script, then keeps the handler. */
    public static void handler(int handle, IntermediateResultHandler resultHandler) {
        record('V', new Object[] {handle, resultHandler});
        handler = resultHandler;
    }

    // ---- recording -----------------------------------------------------

    private static final class Script {
        private final String[] outcomes;
        private int next;

        Script(String[] outcomes) {
            this.outcomes = outcomes;
        }

        String take() {
            String outcome = outcomes[Math.min(next, outcomes.length - 1)];
            if (next < outcomes.length) {
                next++;
            }
            return outcome;
        }
    }

    /**
     * Journals the call of the method that called the recorder and returns its
     * scripted outcome (null when unscripted); throws for "throw".
     */
    private static String record(char kind, Object[] args) {
        if (QUIET) {
            return null;
        }
        StackWalker.StackFrame caller = WALKER.walk(frames -> frames
                .filter(f -> !f.getClassName().equals(SELF) && !f.getClassName().startsWith(SELF + "$"))
                .findFirst())
                .orElseThrow(() -> new IllegalStateException("recorder called without a caller"));
        String name = caller.getMethodName();
        String descriptor = caller.getDescriptor();
        checkKind(kind, name, descriptor);

        StringBuilder entry = new StringBuilder(name).append(descriptor);
        for (int k = 0; k < args.length; k++) {
            entry.append(k == 0 ? " " : ", ").append(render(args[k]));
        }

        for (int k = args.length - 1; k >= 0; k--) {
            if (args[k] != null && !(args[k] instanceof Number) && !(args[k] instanceof Boolean)) {
                lastArgument = new WeakReference<>(args[k]);
                break;
            }
        }

        String outcome;
        synchronized (Sdk.class) {
            entries.add(entry.toString());
            Script script = scripts.get(name + descriptor);
            if (script == null) {
                script = scripts.get(name);
            }
            outcome = script == null ? null : script.take();
        }
        if ("throw".equals(outcome)) {
            throw new RuntimeException("scripted failure in " + name);
        }
        return outcome;
    }

    /** Guards the double itself against a method delegating to the wrong recorder. */
    private static void checkKind(char kind, String name, String descriptor) {
        String result = descriptor.substring(descriptor.indexOf(')') + 1);
        boolean fits;
        switch (kind) {
            case 'S':
                fits = result.equals("Ljava/lang/String;");
                break;
            case 'L':
                fits = (result.startsWith("L") || result.startsWith("[")) && !result.equals("Ljava/lang/String;");
                break;
            default:
                fits = result.equals(String.valueOf(kind));
                break;
        }
        if (!fits) {
            throw new AssertionError("recorder kind " + kind + " used by " + name + descriptor);
        }
    }

    private static IllegalStateException badOutcome(String outcome) {
        StackWalker.StackFrame caller = WALKER.walk(frames -> frames
                .filter(f -> !f.getClassName().equals(SELF)).findFirst()).orElse(null);
        String where = caller == null ? "?" : caller.getMethodName() + caller.getDescriptor();
        return new IllegalStateException("scripted outcome \"" + outcome + "\" does not fit " + where);
    }

    private static String render(Object value) {
        if (value == null) {
            return "null";
        }
        if (value instanceof String) {
            return quote((String) value);
        }
        if (value instanceof String[]) {
            StringBuilder out = new StringBuilder("[");
            String[] list = (String[]) value;
            for (int k = 0; k < list.length; k++) {
                out.append(k == 0 ? "" : ", ").append(list[k] == null ? "null" : quote(list[k]));
            }
            return out.append(']').toString();
        }
        if (value instanceof Integer || value instanceof Long || value instanceof Boolean) {
            return value.toString();
        }
        return value.getClass().getSimpleName();
    }

    private static String quote(String text) {
        return '"' + text.replace("\n", "\\n").replace("\r", "\\r") + '"';
    }
}
