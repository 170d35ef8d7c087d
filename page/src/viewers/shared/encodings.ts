import { ENCODINGS, encodingOf } from '../../decode';
import { el } from '../../dom';
import { openMenu } from '../../menu';

/** The foot's button that names the encoding and lets another be chosen. */
export function encodingButton(label: string, choose: (label: string) => void): HTMLButtonElement {
    const button = el('button', { class: 'btn encoding', type: 'button', 'aria-haspopup': 'menu', title: 'Encoding' });
    const name = (now: string) => {
        button.textContent = encodingOf(now).name;
        button.onclick = () => {
            const items = ENCODINGS.map(encoding => ({
                label: encoding.name,
                checked: encoding.label === now,
                run: () => {
                    name(encoding.label);
                    choose(encoding.label);
                },
            }));
            openMenu(button, 'Encoding', [items]);
        };
    };
    name(label);
    return button;
}
