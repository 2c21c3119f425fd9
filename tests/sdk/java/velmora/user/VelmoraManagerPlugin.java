package velmora.user;

/** A plug-in handed out by the management object. */
public class VelmoraManagerPlugin {}
