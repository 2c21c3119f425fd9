import java.nio.file.Files;
import java.nio.file.Path;
import java.util.LinkedHashMap;
import java.util.Map;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import java.util.stream.Collectors;

/**
 * Writes the Java sources of the SDK double from its description (double.txt):
 * java Generate.java DESCRIPTION OUTDIR HANDWRITTEN... makes OUTDIR/SET/... for
 * the double ("double") and every variant, with OUTDIR/SET/sources.txt listing
 * every source of that set: hand-written (files under a java/ directory) and
 * generated. A variant starts from the double's classes, drops those it names after
 * "without", and replaces or adds those it describes.
 */
public final class Generate {
    private static final Pattern CONSTRUCTOR = Pattern.compile("(\\w+)\\(([^)]*)\\)( throws)?");
    private static final Pattern METHODS = Pattern.compile("([\\w\\[\\]]+) ([\\w ]+)\\(([^)]*)\\)(?: = (.+))?");
    private static final Map<String, String> RECORDERS =
            Map.of("int", "i", "long", "j", "boolean", "z", "String", "s", "void", "v");
    private static final Map<String, String> DESCRIPTORS = Map.of("int", "I", "long", "J", "boolean", "Z",
            "void", "V", "String", "Ljava/lang/String;", "Class", "Ljava/lang/Class;");

    public static void main(String[] args) throws Exception {
        Map<String, Map<String, Path>> sets = new LinkedHashMap<>();  // set -> class -> source
        Map<String, StringBuilder> generated = new LinkedHashMap<>();  // source -> text
        sets.put("double", new LinkedHashMap<>());
        for (int k = 2; k < args.length; k++) {  // .../java/velmora/user/X.java is velmora.user.X
            String name = args[k].substring(args[k].lastIndexOf("/java/") + 6).replace(".java", "");
            sets.get("double").put(name.replace('/', '.'), Path.of(args[k]));
        }
        String set = "double";
        StringBuilder out = null;
        for (String line : Files.readAllLines(Path.of(args[0]))) {
            Matcher m;
            if (line.isBlank() || line.startsWith("#")) {
                continue;
            } else if (line.startsWith("variant ")) {
                String[] words = line.split(" ");
                set = words[1];
                sets.put(set, new LinkedHashMap<>(sets.get("double")));
                for (int k = 3; k < words.length; k++) sets.get(set).remove(words[k]);
            } else if (line.startsWith("class ")) {
                String name = line.substring(6);
                int dot = name.lastIndexOf('.');
                Path file = Path.of(args[1], set, name.replace('.', '/') + ".java").toAbsolutePath();
                out = new StringBuilder("package " + name.substring(0, dot) + ";\nimport velmora.testing.Sdk;\n"
                        + "public class " + name.substring(dot + 1) + " {\n");
                generated.put(file.toString(), out);
                sets.get(set).put(name, file);
            } else if ((m = CONSTRUCTOR.matcher(line)).matches()) {
                out.append(String.format("public %s(%s) { Sdk.constructed();%s }%n", m.group(1), parameters(m.group(2)),
                        m.group(3) == null ? "" : " throw new IllegalStateException(\"refused\");"));
            } else if ((m = METHODS.matcher(line)).matches()) {
                String type = m.group(1);
                String[] types = m.group(3).isBlank() ? new String[0] : m.group(3).split(",\\s*");
                StringBuilder signature = new StringBuilder("(");
                StringBuilder arguments = new StringBuilder();
                for (int k = 0; k < types.length; k++) {
                    signature.append(descriptor(types[k]));
                    arguments.append(", (Object) a").append(k);
                }
                signature.append(')').append(descriptor(type));
                for (String name : m.group(2).split(" ")) {
                    out.append(String.format("public %s %s(%s) { %sSdk.%s(%s\"%s%s\"%s); }%n", type, name,
                            parameters(m.group(3)), type.equals("void") ? "" : "return ",
                            RECORDERS.getOrDefault(type, "o"), m.group(4) == null ? "" : m.group(4) + ", ", name,
                            signature, arguments));
                }
            } else {
                throw new IllegalArgumentException("cannot read: " + line);
            }
        }
        for (Map.Entry<String, StringBuilder> source : generated.entrySet()) {
            Files.createDirectories(Path.of(source.getKey()).getParent());
            Files.writeString(Path.of(source.getKey()), source.getValue().append("}\n"));
        }
        for (Map.Entry<String, Map<String, Path>> s : sets.entrySet()) {
            Files.createDirectories(Path.of(args[1], s.getKey()));
            Files.write(Path.of(args[1], s.getKey(), "sources.txt"),
                    s.getValue().values().stream().map(Path::toString).collect(Collectors.toList()));
        }
    }

    private static String parameters(String list) {
        String[] types = list.isBlank() ? new String[0] : list.split(",\\s*");
        StringBuilder out = new StringBuilder();
        for (int k = 0; k < types.length; k++) out.append(k == 0 ? "" : ", ").append(types[k]).append(" a").append(k);
        return out.toString();
    }

    private static String descriptor(String type) {
        return type.endsWith("[]") ? "[" + descriptor(type.substring(0, type.length() - 2))
                : DESCRIPTORS.getOrDefault(type, "Lvelmora/user/" + type + ";");
    }
}
