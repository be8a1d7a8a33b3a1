// Makes a function visible to hosts. On Windows the module definition file lists the exports, undecorated.
#ifndef BOUNDARY_EXPORTDECORATION_H
#define BOUNDARY_EXPORTDECORATION_H

#ifdef _WIN32
#define QX_EXPORT extern "C"
#else
#define QX_EXPORT extern "C" __attribute__((visibility("default")))
#endif

#endif
