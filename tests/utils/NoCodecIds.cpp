// A library that can be loaded and lacks the function.
extern "C" __attribute__((visibility("default"))) int UnrelatedFunction() {
    return 0;
}
