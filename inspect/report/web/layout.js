// How the parts of the page stand: by the letters that there is room for, so that large text is laid out as on a small
// screen.

const LETTERS_FOR_THREE = 80;
const LETTERS_FOR_TWO = 52;
const LINES_FOR_PANES = 34;

function followLayout() {
    const letter = make('div', {class: 'visually-hidden'});
    letter.style.width = '1rem';
    document.body.append(letter);
    const layOut = () => {
        const root = document.documentElement;
        const rem = parseFloat(getComputedStyle(root).fontSize) || 16;
        const across = window.innerWidth / rem;
        root.dataset.layout = across >= LETTERS_FOR_THREE ? 'three' : across >= LETTERS_FOR_TWO ? 'two' : 'one';
        root.toggleAttribute('data-low', window.innerHeight / rem < LINES_FOR_PANES);
    };
    new ResizeObserver(layOut).observe(letter);
    window.addEventListener('resize', layOut);
    layOut();
}
