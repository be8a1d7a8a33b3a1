# Tells CMake that it builds for Windows. On Windows nobody has to, so the guide does not; all else it says itself.
set(CMAKE_SYSTEM_NAME Windows)
