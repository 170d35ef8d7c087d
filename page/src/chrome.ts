/** The title strip as a view sees it. */
export interface Chrome {
    /** The line beside the name ("4032 × 3024 · 3.9 MB"). */
    meta(text: string): void;
    /** Fills the tool capsule; at most four buttons, none removes it. */
    tools(...buttons: HTMLElement[]): void;
    /** A short message at the lower edge, also read out; it goes by itself. */
    status(text: string): void;
}
