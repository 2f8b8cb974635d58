// The run time of Objective-C never frees its tables.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libobjc";
}
