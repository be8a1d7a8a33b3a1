# Completion of qxbackground for fish. Asks the program itself what may come next. To use it without installing:
#   qxbackground completion fish | source

function __qxbackground_complete
    set -l words (commandline -opc)
    set -l last (commandline -ct | string replace -r '^["\']' '')
    set -l answer (command $words[1] --complete $words[2..-1] "$last" 2>/dev/null)
    set -l kind (string split ' ' -- $answer[1])
    switch "$kind[1]"
        case words
            printf '%s\n' $answer[2..-1]
        case folders
            __fish_complete_directories (string replace -r '^--[^=]*=' '' -- "$last")
        case files
            set -l before (string match -r '^--[^=]*=' -- "$last")
            set -l path (string replace -r '^--[^=]*=' '' -- "$last")
            set -l wanted
            for name in (__fish_complete_path "$path" | string replace -r '\t.*' '')
                if string match -q '*/' -- $name; or test (count $kind) = 1; or contains -- (string lower -- (string split -r -m 1 . -- $name)[-1]) $kind[2..-1]
                    set -a wanted $name
                end
            end
            # Where there is no such file, all of them.
            if not string match -q -v -- '*/' $wanted
                set wanted (__fish_complete_path "$path" | string replace -r '\t.*' '')
            end
            test (count $wanted) = 0; or printf "$before%s\n" $wanted
    end
end

complete -c qxbackground -f -a '(__qxbackground_complete)'
