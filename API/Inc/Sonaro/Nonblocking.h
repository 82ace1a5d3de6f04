#pragma once

// Stands after the parameters of a function of the render path: one that is called between a Preroll and the
// last GetAudioData of a run. It allocates nothing, takes no lock, makes no system call and writes no
// log. Clang's nonblocking where the compiler has it (clang 19 on), for its checks and its real-time sanitizer;
// nothing elsewhere. The engine's overrides repeat it, and those of a host should.
//
// Without prefetch, sources are read by IAudioSource::ReadAudio, which may block as long as it likes and has no
// mark. None of the functions is noexcept: exceptions of a host's objects pass through to the caller.
//
// What is declared so is measured: the tests run graphs of all kinds of nodes while every call to the malloc
// family and every lock of the rendering thread is counted, in the program and in all shared libraries, and one of
// either fails them. Another test compares declarations: no override of the engine's lacks the mark, except that of the
// generator of offline processes, which waits for them.
#if __has_cpp_attribute(clang::nonblocking)
#define SONARO_NONBLOCKING [[clang::nonblocking]]
#else
#define SONARO_NONBLOCKING
#endif
