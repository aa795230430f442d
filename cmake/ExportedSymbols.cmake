# export_only(TARGET LIST): the library offers the symbols in the file LIST and no others, whichever
# compiler built it. One symbol a line, as `nm -DC` shows it.

function(export_only target list)
    file(STRINGS ${list} symbols)
    list(JOIN symbols "\"\n        \"" symbols)
    string(REPLACE "\n" ";\n" symbols "        \"${symbols}\"")
    set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
    file(CONFIGURE OUTPUT ${script} @ONLY
        CONTENT "{\n    global: extern \"C++\" {\n@symbols@;\n    };\n    local: *;\n};\n")
    target_link_options(${target} PRIVATE LINKER:--version-script=${script})
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${script})
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
endfunction()
