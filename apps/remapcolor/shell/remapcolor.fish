# fish completion for remapcolor: the program itself knows what may stand where.

function __remapcolor_complete
    set -l typed (commandline -ct | string unescape)
    set -l words (commandline -opc)
    set -l answer ($words[1] complete $words[2..-1] "$typed" 2>/dev/null)
    if test "$answer[1]" = files
        set -l before (string match -r -- '^--[^=]*=' "$typed")
        __fish_complete_path (string replace -r -- '^--[^=]*=' '' "$typed") | string replace -r -- '^' "$before"
    else if set -q answer[2]
        printf '%s\n' $answer[2..-1]
    end
end

complete -c remapcolor -f -a '(__remapcolor_complete)'
