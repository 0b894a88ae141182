# Builds for 32-bit x86 Linux on a 64-bit machine (needs g++-multilib).
set(CMAKE_CXX_FLAGS_INIT -m32)

# Where the machine cannot run 32-bit programs, the user-mode emulator runs them.
execute_process(COMMAND /lib/ld-linux.so.2 --version RESULT_VARIABLE refused OUTPUT_QUIET ERROR_QUIET)
if(refused)
    find_program(QEMU_I386 qemu-i386 REQUIRED)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${QEMU_I386})
endif()
