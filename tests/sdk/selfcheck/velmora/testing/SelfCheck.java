package velmora.testing;

import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.HashSet;
import java.util.List;
import java.util.Set;
import java.util.concurrent.ConcurrentLinkedQueue;
import java.util.concurrent.atomic.AtomicInteger;
import velmora.user.ManagementImpl;
import velmora.user.NativeFunctionCaller;
import velmora.user.PeachWrapper;
import velmora.user.VelmoraManagerPlugin;

/**
 * Proves the SDK double before the native tests lean on it: journal format,
 * overload descriptors, script queues and the result-handler plumbing.
 * Exits with status 1 and a list of failures when anything is off.
 */
public final class SelfCheck {
    private static final List<String> failures = new ArrayList<>();

    private SelfCheck() {
    }

    public static void main(String[] args) throws Exception {
        journalNamesTheOverloadThatRan();
        argumentsAreRenderedByType();
        scriptsAreQueuesWithStickyTail();
        outcomesAreParsedByReturnType();
        objectMethodsHaveNaturalDefaults();
        resetForgetsEverything();
        resultHandlerDelivery();
        everyMethodJournalsItself();

        if (failures.isEmpty()) {
            System.out.println("SDK double self-check passed");
        } else {
            failures.forEach(f -> System.err.println("FAIL: " + f));
            System.exit(1);
        }
    }

    private static void check(boolean ok, String what) {
        if (!ok) {
            failures.add(what);
        }
    }

    private static void expectJournal(String what, String... lines) {
        String got = Sdk.journal();
        String want = String.join("\n", lines);
        check(got.equals(want), what + ": journal\n--- got ---\n" + got + "\n--- want ---\n" + want);
    }

    private static void expectThrows(String what, Class<? extends Throwable> type, String message, Runnable call) {
        try {
            call.run();
            failures.add(what + ": nothing thrown");
        } catch (Throwable e) {
            check(type.isInstance(e), what + ": threw " + e);
            check(message == null || message.equals(e.getMessage()), what + ": message " + e.getMessage());
        }
    }

    private static void journalNamesTheOverloadThatRan() {
        Sdk.reset();
        ManagementImpl m = new ManagementImpl();
        m.initFile();
        m.initFile("f");
        m.initFile("f", "pw");
        m.unload(true);
        m.unload(true, false);
        m.downloadResult(4);
        m.downloadResult(4, true);
        m.bundleExists("b");
        m.bundleExists("b", "p");
        PeachWrapper w = m.getPeachWrapper();
        w.setPriority(1, 9);
        w.setPriority(1, "high");
        w.newDataBundle(2);
        w.newDataBundle(2, "d");
        w.addParamFile(3, "a");
        w.addParamFile(3, "a", "t");
        m.open();
        expectJournal("overloads",
                "initFile()I",
                "initFile(Ljava/lang/String;)I \"f\"",
                "initFile(Ljava/lang/String;Ljava/lang/String;)I \"f\", \"pw\"",
                "unload(Z)I true",
                "unload(ZZ)I true, false",
                "downloadResult(I)I 4",
                "downloadResult(IZ)I 4, true",
                "bundleExists(Ljava/lang/String;)Z \"b\"",
                "bundleExists(Ljava/lang/String;Ljava/lang/String;)Z \"b\", \"p\"",
                "getPeachWrapper()Lvelmora/user/PeachWrapper;",
                "setPriority(II)V 1, 9",
                "setPriority(ILjava/lang/String;)V 1, \"high\"",
                "newDataBundle(I)V 2",
                "newDataBundle(ILjava/lang/String;)V 2, \"d\"",
                "addParamFile(ILjava/lang/String;)V 3, \"a\"",
                "addParamFile(ILjava/lang/String;Ljava/lang/String;)V 3, \"a\", \"t\"",
                "open()I");
        check(Sdk.journal().isEmpty(), "journal() clears the entries");
    }

    private static void argumentsAreRenderedByType() {
        Sdk.reset();
        ManagementImpl m = new ManagementImpl();
        PeachWrapper w = m.getPeachWrapper();
        Sdk.journal();
        m.createJob(7, new String[] {"a", "b"});
        m.createJob(0, new String[0]);
        m.createJob(1, null);
        m.createJob(2, new String[] {"x", null});
        m.peach(new String[] {"only"});
        m.isJobCompleted(-1, 1L << 40);
        m.sendJobPostParameter(5, Long.MIN_VALUE, null);
        m.setLogLevel("two\nlines\r");
        m.setLogLevel("");
        m.createBundle(1, "s1", "s2", "s3", "s4", "s5", "s6", "s7", "s8", "s9", new String[] {"l1"}, new String[0]);
        w.setIntermediateResultHandler(3, new NativeFunctionCaller());
        w.setMessages(0, false);
        w.addJobFileWithDir(6, "dir", new String[] {"j"});
        expectJournal("rendering",
                "createJob(I[Ljava/lang/String;)I 7, [\"a\", \"b\"]",
                "createJob(I[Ljava/lang/String;)I 0, []",
                "createJob(I[Ljava/lang/String;)I 1, null",
                "createJob(I[Ljava/lang/String;)I 2, [\"x\", null]",
                "peach([Ljava/lang/String;)I [\"only\"]",
                "isJobCompleted(IJ)Z -1, 1099511627776",
                "sendJobPostParameter(IJLjava/lang/String;)I 5, -9223372036854775808, null",
                "setLogLevel(Ljava/lang/String;)I \"two\\nlines\\r\"",
                "setLogLevel(Ljava/lang/String;)I \"\"",
                "createBundle(ILjava/lang/String;Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;"
                        + "Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;"
                        + "Ljava/lang/String;[Ljava/lang/String;[Ljava/lang/String;)I "
                        + "1, \"s1\", \"s2\", \"s3\", \"s4\", \"s5\", \"s6\", \"s7\", \"s8\", \"s9\", [\"l1\"], []",
                "setIntermediateResultHandler(ILvelmora/user/IntermediateResultHandler;)V 3, NativeFunctionCaller",
                "setMessages(IZ)V 0, false",
                "addJobFileWithDir(ILjava/lang/String;[Ljava/lang/String;)V 6, \"dir\", [\"j\"]");
    }

    private static void scriptsAreQueuesWithStickyTail() {
        Sdk.reset();
        ManagementImpl m = new ManagementImpl();
        Sdk.script("open", "1", "2");
        int[] got = {m.open(), m.open(), m.open(), m.open()};
        check(Arrays.equals(got, new int[] {1, 2, 2, 2}), "queue then last sticks: " + Arrays.toString(got));

        Sdk.script("initFile", "5");
        Sdk.script("initFile(Ljava/lang/String;)I", "6");
        check(m.initFile() == 5, "bare name applies to every overload");
        check(m.initFile("x") == 6, "name+descriptor wins over the bare name");
        check(m.initFile("x", "y") == 5, "other overloads keep the bare-name script");

        Sdk.script("open");
        check(m.open() == 0, "a script without outcomes is removed");

        Sdk.script("close", "throw", "3");
        Sdk.journal();
        expectThrows("throw outcome", RuntimeException.class, "scripted failure in close", () -> m.close(1));
        check(m.close(2) == 3, "queue continues after a throw");
        expectJournal("a throwing call is still journaled", "close(I)I 1", "close(I)I 2");

        Sdk.script("peachDone", "throw", "ok");
        PeachWrapper w = m.getPeachWrapper();
        Sdk.script("done", "throw", "anything");
        expectThrows("void throw", RuntimeException.class, "scripted failure in peachDone", () -> m.peachDone(1));
        m.peachDone(1);
        expectThrows("peach void throw", RuntimeException.class, "scripted failure in done", () -> w.done(1));
        w.done(1);
    }

    private static void outcomesAreParsedByReturnType() {
        Sdk.reset();
        ManagementImpl m = new ManagementImpl();
        Sdk.script("getUsedTime", "-11", "8589934592");
        check(m.getUsedTime(0) == -11L && m.getUsedTime(0) == 8589934592L, "long outcomes");
        Sdk.script("isFailed", "true", "false");
        check(m.isFailed(0) && !m.isFailed(0), "boolean outcomes");
        Sdk.script("getTempDir", "/tmp/x y", "", "null");
        check("/tmp/x y".equals(m.getTempDir()), "string verbatim");
        check("".equals(m.getTempDir()), "empty string outcome");
        check(m.getTempDir() == null, "\"null\" gives a null string");
        check(m.getUserLogin() == null && m.describeStatusCode(1) == null, "unscripted strings are null");
        check(m.getUsedCpuTime(0) == 0 && !m.isCompleted(0) && m.ready(0) == 0, "unscripted numbers are 0/false");

        Sdk.script("ready", "many");
        Sdk.script("isCompleted", "1");
        Sdk.script("getPluginClass", "7");
        expectThrows("int parse", IllegalStateException.class, null, () -> m.ready(0));
        expectThrows("boolean parse", IllegalStateException.class, null, () -> m.isCompleted(0));
        expectThrows("object outcome", IllegalStateException.class, null, () -> m.getPluginClass("p"));
    }

    private static void objectMethodsHaveNaturalDefaults() {
        Sdk.reset();
        ManagementImpl m = new ManagementImpl();
        PeachWrapper w = m.getPeachWrapper();
        check(w != null && w == m.getPeachWrapper(), "one wrapper per management object");
        check(new ManagementImpl().getPeachWrapper() != w, "each management object has its own wrapper");
        VelmoraManagerPlugin p = m.getPlugin("alpha");
        check(p != null && "alpha".equals(p.getName()), "plugin carries its name");
        check(m.getPluginClass("alpha") == VelmoraManagerPlugin.class, "plugin class");
        Sdk.script("getPeachWrapper", "null", "throw");
        check(m.getPeachWrapper() == null, "wrapper scripted null");
        expectThrows("wrapper scripted throw", RuntimeException.class, "scripted failure in getPeachWrapper",
                m::getPeachWrapper);
        Sdk.script("getPlugin", "null");
        check(m.getPlugin("beta") == null, "plugin scripted null");
    }

    private static void resetForgetsEverything() {
        Sdk.reset();
        new ManagementImpl();
        ManagementImpl m = new ManagementImpl();
        check(Sdk.instances() == 2, "constructions counted: " + Sdk.instances());
        Sdk.script("open", "4");
        m.open();
        Sdk.reset();
        check(Sdk.instances() == 0, "reset clears the instance count");
        check(Sdk.journal().isEmpty(), "reset clears the journal");
        check(m.open() == 0, "reset clears the scripts");
    }

    private static void resultHandlerDelivery() throws InterruptedException {
        Sdk.reset();
        expectThrows("fire without handler", IllegalStateException.class, null, () -> Sdk.fire("x"));
        PeachWrapper w = new ManagementImpl().getPeachWrapper();
        ConcurrentLinkedQueue<String> first = new ConcurrentLinkedQueue<>();
        ConcurrentLinkedQueue<String> second = new ConcurrentLinkedQueue<>();
        w.setIntermediateResultHandler(1, text -> first.add(String.valueOf(text)));
        Sdk.fire("one");
        Sdk.fire(null);
        check(new ArrayList<>(first).equals(List.of("one", "null")), "fire delivers in order: " + first);

        Sdk.script("setIntermediateResultHandler", "throw");
        expectThrows("registration scripted throw", RuntimeException.class, null,
                () -> w.setIntermediateResultHandler(2, text -> second.add(text)));
        Sdk.fire("still first");
        check(second.isEmpty() && first.contains("still first"), "a rejected registration keeps the old handler");

        first.clear();
        int delivered = Sdk.fireConcurrently(4, 250, "r");
        Set<String> distinct = new HashSet<>(first);
        check(delivered == 1000 && first.size() == 1000 && distinct.size() == 1000,
                "concurrent delivery: " + delivered + " / " + first.size() + " / " + distinct.size());
        check(distinct.contains("r0:0") && distinct.contains("r3:249"), "concurrent texts are prefix+thread:index");

        Sdk.script("setIntermediateResultHandler");
        first.clear();
        AtomicInteger seen = new AtomicInteger();
        w.setIntermediateResultHandler(1, text -> {
            first.add(text);
            if (seen.incrementAndGet() == 100) {
                w.setIntermediateResultHandler(4, second::add);
            }
        });
        delivered = Sdk.fireConcurrently(2, 1000, "s");
        check(delivered == 2000 && first.size() + second.size() == 2000 && first.size() >= 100
                && first.size() < 2000, "re-registration switches handlers mid-stream: "
                + first.size() + " + " + second.size());

        Sdk.reset();
        expectThrows("reset forgets the handler", IllegalStateException.class, null, () -> Sdk.fire("x"));
    }

    /** Calls every public method of the double with sample arguments and checks its journal entry. */
    private static void everyMethodJournalsItself() throws Exception {
        Sdk.reset();
        ManagementImpl m = new ManagementImpl();
        Object[] targets = {m, m.getPeachWrapper()};
        int calls = 0;
        for (Object target : targets) {
            for (Method method : target.getClass().getDeclaredMethods()) {
                if (!Modifier.isPublic(method.getModifiers())) {
                    continue;
                }
                Class<?>[] types = method.getParameterTypes();
                Object[] args = new Object[types.length];
                List<String> rendered = new ArrayList<>();
                for (int k = 0; k < types.length; k++) {
                    args[k] = sample(types[k], k);
                    rendered.add(render(args[k]));
                }
                Sdk.journal();
                try {
                    method.invoke(target, args);
                } catch (InvocationTargetException e) {
                    failures.add(method + " threw " + e.getCause());
                    continue;
                }
                String want = method.getName() + descriptor(method)
                        + (rendered.isEmpty() ? "" : " " + String.join(", ", rendered));
                String got = Sdk.journal();
                check(got.equals(want), "entry of " + method + "\n  got:  " + got + "\n  want: " + want);
                calls++;
            }
        }
        check(calls > 130, "swept " + calls + " methods");
    }

    private static Object sample(Class<?> type, int position) {
        if (type == int.class) {
            return -position - 1;
        }
        if (type == long.class) {
            return (1L << 33) + position;
        }
        if (type == boolean.class) {
            return position % 2 == 0;
        }
        if (type == String.class) {
            return "t" + position;
        }
        if (type == String[].class) {
            return new String[] {"e" + position, "f" + position};
        }
        return new NativeFunctionCaller();
    }

    private static String render(Object value) {
        if (value instanceof String) {
            return "\"" + value + "\"";
        }
        if (value instanceof String[]) {
            String[] list = (String[]) value;
            return "[\"" + list[0] + "\", \"" + list[1] + "\"]";
        }
        if (value instanceof NativeFunctionCaller) {
            return "NativeFunctionCaller";
        }
        return String.valueOf(value);
    }

    private static String descriptor(Method method) {
        StringBuilder out = new StringBuilder("(");
        for (Class<?> type : method.getParameterTypes()) {
            out.append(descriptor(type));
        }
        return out.append(')').append(descriptor(method.getReturnType())).toString();
    }

    private static String descriptor(Class<?> type) {
        if (type.isArray()) {
            return "[" + descriptor(type.getComponentType());
        }
        if (type.isPrimitive()) {
            return String.valueOf("VZIJ".charAt(Arrays.asList(void.class, boolean.class, int.class, long.class)
                    .indexOf(type)));
        }
        return "L" + type.getName().replace('.', '/') + ";";
    }
}
