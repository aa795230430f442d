# One source for every instruction set: add_instruction_sets(TARGET SOURCE LIBRARY) compiles it with
# INSTRUCTION_SET as the name of each and adds the objects to the target; LIBRARY gives the include
# folders. Always optimised, so that no function of one set can be taken for another's.

function(add_instruction_sets target source library)
    set(sets Baseline)
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
        list(APPEND sets Avx2 Avx512)
    endif()
    set(flags_Avx2 -mavx2 -mf16c)
    # Tuned for such processors: without, GCC loads a block of pixels again for every use.
    set(flags_Avx512 -mavx512f -mavx512vl -mavx512bw -mavx512dq -mf16c -mtune=skylake-avx512)
    foreach(set IN LISTS sets)
        set(objects ${target}${set})
        add_library(${objects} OBJECT ${source})
        target_link_libraries(${objects} PRIVATE ${library})
        target_compile_definitions(${objects} PRIVATE INSTRUCTION_SET=${set})
        # The compiler's own vector headers set off the first two warnings, vector arguments the
        # others.
        target_compile_options(${objects} PRIVATE
            -Wno-maybe-uninitialized -Wno-uninitialized -Wno-psabi -Wno-ignored-attributes
            ${flags_${set}})
        if(NOT REMAPCOLOR_SANITIZE)
            target_compile_options(${objects} PRIVATE -O3)
        elseif(REMAPCOLOR_SANITIZE MATCHES "undefined")
            # GCC 12's checks of integer arithmetic miscompile arithmetic on vectors.
            target_compile_options(${objects} PRIVATE
                -fno-sanitize=shift,signed-integer-overflow,integer-divide-by-zero)
        endif()
        set_target_properties(${objects} PROPERTIES
            CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
        target_sources(${target} PRIVATE $<TARGET_OBJECTS:${objects}>)
    endforeach()
endfunction()
