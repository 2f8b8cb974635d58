// Containers are marked as the sanitizer wants it in sanitized code only: one
// that is passed between that and the tests would be taken for overrun.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
    return "detect_container_overflow=0";
}
