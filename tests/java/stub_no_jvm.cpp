// A library that lies where the JVM library should, but is none.
extern "C" __attribute__((visibility("default"))) int quillory_stub_no_jvm() { return 0; }
