// A library has a source; this one is there for its precompiled headers only.
