/**
 * Keeps late answers out: every request of the shell has a number that only grows, and "busy" announces the current
 * one. An answer older than the newest number seen belongs to something that the user has already left.
 */
export class RequestOrder {
    private latest = 0;

    begin(requestId: number): void {
        this.latest = Math.max(this.latest, requestId);
    }

    /**
     * Whether an answer is still wanted. A newer one than announced is: cancelling and a missing file answer without
     * "busy".
     */
    accepts(requestId: number): boolean {
        if (requestId < this.latest) return false;
        this.latest = requestId;
        return true;
    }
}
