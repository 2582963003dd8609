// The shared library's own translation unit. Everything in the library comes
// in whole from its static parts (see CMakeLists.txt): the registrations of
// the host screen and the settings file reader run from their static
// initialisers when the library is loaded.
