package velmora.user;

/** A plug-in handed out by the management object; remembers the name it was asked for. */
public class VelmoraManagerPlugin {
    private final String name;

    public VelmoraManagerPlugin() {
        this(null);
    }

    public VelmoraManagerPlugin(String name) {
        this.name = name;
    }

    public String getName() {
        return name;
    }
}
