#compdef qxbackground
# Completion of qxbackground for zsh. Asks the program itself what may come next. To use it without installing:
#   source <(qxbackground completion zsh)

_qxbackground() {
    local -a answer offered endings
    local line word
    answer=("${(@f)$(command ${(Q)words[1]/#\~\//$HOME/} --complete "${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}" 2>/dev/null)}")
    case ${answer[1]} in
        words)
            for line in "${(@)answer[2,-1]}"; do
                word=${${line%%$'\t'*}//:/\\:}
                [[ $line == *$'\t'* ]] && word+=:${line#*$'\t'}
                offered+=("$word")
            done
            _describe -V qxbackground offered
            ;;
        folders)
            [[ $PREFIX == --*=* ]] && compset -P 1 '*='
            _files -/
            ;;
        files*)
            [[ $PREFIX == --*=* ]] && compset -P 1 '*='
            endings=(${=answer[1]#files})
            if (( $#endings )); then
                _files -g "(#i)*.(${(j:|:)endings})(-.)"
            else
                _files
            fi
            ;;
        value*)
            _message -r "${answer[1]#*$'\t'}"
            ;;
    esac
}

if [[ $zsh_eval_context[-1] == loadautofunc ]]; then
    _qxbackground "$@"
elif (( $+functions[compdef] )); then
    compdef _qxbackground qxbackground
fi
