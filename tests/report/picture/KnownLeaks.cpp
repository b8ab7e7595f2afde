/// fontconfig keeps a few patterns of the first text that a process draws; the leak checker of the sanitizers
/// is told so.
extern "C" const char*
__lsan_default_suppressions();  // NOLINT(bugprone-reserved-identifier): the hook's name

extern "C" const char* __lsan_default_suppressions() {  // NOLINT(bugprone-reserved-identifier)
    return "leak:libfontconfig\n";
}
