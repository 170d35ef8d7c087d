/** Shows whether a button is switched on, to the eye and to assistive tools. */
export function setPressed(button: HTMLElement, on: boolean): void {
    button.classList.toggle('on', on);
    button.setAttribute('aria-pressed', String(on));
}
