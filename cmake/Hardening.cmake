# What the compiler and the linker add against faults that nobody has found yet: canaries on stacks that hold arrays,
# stacks grown page by page, targets of indirect calls marked, tables of the dynamic linker read-only before the first
# call, no stack that can be executed. For all that is built, so that the tests run what is delivered.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported(LANGUAGES C CXX) # from here on programs are linked as they are compiled, to run at any address
foreach(flag IN ITEMS -fstack-protector-strong -fstack-clash-protection -fcf-protection=full)
    string(MAKE_C_IDENTIFIER "KORMELIN_HAS${flag}" known)
    check_cxx_compiler_flag("${flag}" ${known}) # the last one is known for x86 only
    if(${known})
        add_compile_options("${flag}")
    endif()
endforeach()
add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
if(NOT KORMELIN_SANITIZE)
    # The C library's checked forms of memcpy and its like. The sanitizers know the plain forms only.
    add_compile_options("$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE>"
        "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=2>")
endif()
