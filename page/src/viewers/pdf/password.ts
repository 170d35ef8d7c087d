import { el, icon } from '../../dom';

export function askPassword(host: HTMLElement, name: string, again: boolean, answer: (password: string) => void): void {
    const field = el('input', { type: 'password', 'aria-label': 'Password', autocomplete: 'off', 'data-focus': '' });
    const form = el(
        'form',
        { class: 'card pdf-ask enter' },
        icon('lock'),
        el('h2', {}, 'This PDF is protected'),
        el(
            'p',
            {},
            again ? 'That password does not fit. Try another one.' : `Enter the password of “${name}” to open it.`,
        ),
        el('div', { class: 'pdf-ask-row' }, field, el('button', { class: 'btn main', type: 'submit' }, 'Open')),
    );
    form.addEventListener('submit', event => {
        event.preventDefault();
        if (field.value) answer(field.value);
    });
    host.replaceChildren(el('div', { class: 'pdf-stage' }, form));
    field.focus();
}
