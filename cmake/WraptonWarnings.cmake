# The project's warnings, for its own targets only.
add_library(wrapton_warnings INTERFACE)
target_compile_options(wrapton_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
