import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/**
 * Writes the Java sources of the SDK double from its description (double.txt):
 * java Generate.java DESCRIPTION OUTDIR makes OUTDIR/SET/... for the double
 * ("double") and every variant, with OUTDIR/SET/sources.txt listing the files.
 */
public final class Generate {
    private static final Pattern CONSTRUCTOR = Pattern.compile("(\\w+)\\(([^)]*)\\)( throws)?");
    private static final Pattern METHOD = Pattern.compile("([\\w\\[\\]]+) (\\w+)\\(([^)]*)\\)(?: = (.+))?");

    public static void main(String[] args) throws IOException {
        Map<String, StringBuilder> classes = new LinkedHashMap<>();
        String set = "double";
        StringBuilder body = null;
        for (String line : Files.readAllLines(Path.of(args[0]))) {
            line = line.strip();
            Matcher m;
            if (line.isEmpty() || line.startsWith("#")) {
                continue;
            } else if (line.startsWith("variant ")) {
                set = line.substring(8);
            } else if (line.startsWith("class ")) {
                String name = line.substring(6);
                int dot = name.lastIndexOf('.');
                body = new StringBuilder("package " + name.substring(0, dot) + ";\nimport velmora.testing.Sdk;\n"
                        + "public class " + name.substring(dot + 1) + " {\n");
                classes.put(set + "/" + name.replace('.', '/') + ".java", body);
            } else if ((m = CONSTRUCTOR.matcher(line)).matches()) {
                body.append("public ").append(m.group(1)).append('(').append(parameters(m.group(2)))
                        .append(") { Sdk.constructed();")
                        .append(m.group(3) == null ? "" : " throw new IllegalStateException(\"refused\");")
                        .append(" }\n");
            } else if ((m = METHOD.matcher(line)).matches()) {
                String type = m.group(1);
                String key = m.group(2) + "(" + descriptors(m.group(3)) + ")" + descriptor(type);
                String recorder = Map.of("int", "i", "long", "j", "boolean", "z", "String", "s", "void", "v")
                        .getOrDefault(type, "o");
                String call = "Sdk." + recorder + "(" + (m.group(4) == null ? "" : m.group(4) + ", ") + "\"" + key
                        + "\"" + arguments(m.group(3)) + ")";
                body.append("public ").append(type).append(' ').append(m.group(2)).append('(')
                        .append(parameters(m.group(3))).append(") { ").append(type.equals("void") ? "" : "return ")
                        .append(call).append("; }\n");
            } else {
                throw new IllegalArgumentException("cannot read: " + line);
            }
        }
        Map<String, List<String>> sources = new LinkedHashMap<>();
        for (Map.Entry<String, StringBuilder> c : classes.entrySet()) {
            Path file = Path.of(args[1], c.getKey()).toAbsolutePath();
            Files.createDirectories(file.getParent());
            Files.writeString(file, c.getValue().append("}\n"));
            sources.computeIfAbsent(c.getKey().split("/")[0], k -> new ArrayList<>()).add(file.toString());
        }
        for (Map.Entry<String, List<String>> s : sources.entrySet()) {
            Files.write(Path.of(args[1], s.getKey(), "sources.txt"), s.getValue());
        }
    }

    private static String[] types(String list) {
        return list.isBlank() ? new String[0] : list.split(",\\s*");
    }

    private static String parameters(String list) {
        String[] t = types(list);
        StringBuilder out = new StringBuilder();
        for (int k = 0; k < t.length; k++) {
            out.append(k == 0 ? "" : ", ").append(t[k]).append(" a").append(k);
        }
        return out.toString();
    }

    private static String arguments(String list) {
        StringBuilder out = new StringBuilder();
        for (int k = 0; k < types(list).length; k++) {
            out.append(", (Object) a").append(k);
        }
        return out.toString();
    }

    private static String descriptors(String list) {
        StringBuilder out = new StringBuilder();
        for (String t : types(list)) {
            out.append(descriptor(t));
        }
        return out.toString();
    }

    private static String descriptor(String type) {
        if (type.endsWith("[]")) {
            return "[" + descriptor(type.substring(0, type.length() - 2));
        }
        switch (type) {
            case "int": return "I";
            case "long": return "J";
            case "boolean": return "Z";
            case "void": return "V";
            case "String": case "Class": return "Ljava/lang/" + type + ";";
            default: return "Lvelmora/user/" + type + ";";
        }
    }
}
