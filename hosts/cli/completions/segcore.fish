# fish completion for segcore

function __segcore_option --description 'an option of some commands, the rest as for complete'
    complete --command segcore --condition "__fish_seen_subcommand_from $argv[1]" $argv[2..]
end

complete --command segcore --condition __fish_use_subcommand --no-files \
    --arguments cut --description 'Cut the object out of a photograph'
complete --command segcore --condition __fish_use_subcommand --no-files \
    --arguments replay --description 'Apply the steps of a session file'
complete --command segcore --condition __fish_use_subcommand --no-files \
    --arguments matte --description 'Make a cut-out by a mask from elsewhere'
complete --command segcore --condition __fish_use_subcommand --no-files \
    --arguments snap --description 'Follow edges from point to point'
complete --command segcore --short-option h --long-option help --description 'Show the options'
complete --command segcore --long-option version --description 'Show the version'

set --local all 'cut replay matte snap'
__segcore_option $all -s v -l verbose -d 'Show the log of the library'
__segcore_option $all -l accept-damaged -d 'Take what there is of a damaged photograph'
__segcore_option $all -l max-pixels -x -d 'Refuse pictures of more pixels'
__segcore_option $all -l stats -f -a 'text json' -d 'Print time and memory of each stage'
__segcore_option $all -l svg -r -F -d 'Outline as an SVG path'
__segcore_option $all -l json -r -F -d 'Outline as JSON'

set --local results 'cut replay matte'
__segcore_option $results -s m -l mask -r -F -d Mask
__segcore_option $results -s o -l cutout -r -F -d Cut-out
__segcore_option $results -l alpha -r -F -d 'How much of each pixel is object'
__segcore_option $results -l edges -x -a 'soft hard' -d 'Edges of the cut-out'
__segcore_option $results -l edge-width -x -d 'Pixels that soft edges may reach'
__segcore_option $results -l feather -x -d 'Blur soft edges further, sigma in pixels'
__segcore_option $results -l smooth -x -d 'Smooth the outline, radius in pixels'
__segcore_option $results -l fill-holes -x -d 'Fill holes of at most so many pixels'
__segcore_option $results -l drop-islands -x -d 'Drop pieces of at most so many pixels'
__segcore_option $results -l keep-largest -d 'Keep the largest piece alone'
__segcore_option $results -l no-keep-largest -d 'Keep all pieces'
__segcore_option $results -l crop -f -d 'Crop to the object, with a margin in pixels'
__segcore_option $results -l background -r -F -d 'What stands behind the cut-out'
__segcore_option $results -l unseen -x -a 'nearest zero' -d 'Colours where nothing is seen'
__segcore_option $results -l strip -d 'Leave out the notes of the file'
__segcore_option $results -l compression -x -d 'Of PNG and TIFF, 0 to 9'
__segcore_option $results -l quality -x -d 'Of JPEG and AVIF, 1 to 100'

set --local sessions 'cut replay'
__segcore_option $sessions -s p -l preview -r -F -d 'Photograph with the outline'
__segcore_option $sessions -l save-session -r -F -d 'Marks as a session file'
__segcore_option $sessions -l dump-steps -x -a '(__fish_complete_directories)' \
    -d 'Folder for the mask after each step'
__segcore_option $sessions -l force -d 'Let --dump-steps write among files'
__segcore_option $sessions -l time-limit -x -d 'Longest time in seconds for each segmentation'
__segcore_option $sessions -l time-budget -x -d 'Seconds after which no further pass begins'

__segcore_option cut -l session -r -F -d 'Session file to be continued'
__segcore_option cut -l box -x -d 'Box around the object'
__segcore_option cut -l loop-add -x -d 'Loop around what is to be added'
__segcore_option cut -l loop-remove -x -d 'Loop around what is to be removed'
__segcore_option cut -l snap-loop-add -x -d 'Loop that snaps to edges, adds'
__segcore_option cut -l snap-loop-remove -x -d 'Loop that snaps to edges, removes'
__segcore_option cut -l brush-add -x -d 'Brush path over the object'
__segcore_option cut -l brush-remove -x -d 'Brush path over the background'
__segcore_option cut -l brush-radius -x -d 'Radius of the brushes that follow'
__segcore_option cut -l snap-alpha -x -d 'Share of length for the snapped loops that follow'
__segcore_option cut -l marks -r -F -d 'Scribbles painted in an image'
__segcore_option cut -l undo -d 'Take the last mark back'
__segcore_option cut -l redo -d 'Apply a mark again'
__segcore_option cut -l whole-object -d 'The marks that follow find the whole object'
__segcore_option cut -l touch-up -d 'The marks that follow change nothing elsewhere'
__segcore_option cut -l usual -d 'Back to the usual kind of each mark'
__segcore_option cut -l passes -x -d 'Passes of the whole-object marks that follow'

__segcore_option matte -l from-mask -r -F -d 'Mask of the size of the photograph'

__segcore_option replay -l photo -r -F -d 'Photograph instead of that of the session'

__segcore_option snap -l from -x -d 'Where the path starts'
__segcore_option snap -l to -x -d 'Points that it leads through'
__segcore_option snap -l alpha -x -d 'Share of length in the cost of the path'

functions --erase __segcore_option
